-- Reading the audit trail for review: counted, read a page at a time under a
-- filter and an order, and verified, each for the session token of a user
-- who has the right "Security"/"ViewAuditTrail". The client role still
-- reads no table: these run as the owner. Filter values reach the statement
-- only as parameters, and the ordering is one of a fixed set. An empty text
-- or 0 leaves a field of the filter unset.

-- What a reviewer sorts and filters by; each ends in the sequence number, which breaks ties.
CREATE INDEX audit_trail_utc ON nebra.audit_trail (utc, seq);
CREATE INDEX audit_trail_user ON nebra.audit_trail (lower(user_name), seq);
CREATE INDEX audit_trail_area ON nebra.audit_trail (area, seq);

-- Raises unless the token's open session belongs to a user who may review the trail.
CREATE FUNCTION nebra.check_reviewer(p_token text) RETURNS void
    LANGUAGE plpgsql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF p_token IS NULL OR p_token = '' OR NOT nebra.is_allowed(p_token, 'Security', 'ViewAuditTrail') THEN
        RAISE EXCEPTION 'You do not have the right to view the audit trail.'
            USING ERRCODE = 'insufficient_privilege';
    END IF;
END
$$;

-- The WHERE clause of a filter, over $1 from, $2 to, $3 user, $4 area, $5 text and $6 the newest entry.
CREATE FUNCTION nebra.review_where(p_from text, p_to text, p_user text, p_area text, p_text text,
                                   p_through bigint) RETURNS text
    LANGUAGE sql IMMUTABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT ' WHERE true'
    || CASE WHEN p_from <> '' THEN ' AND utc >= $1' ELSE '' END
    || CASE WHEN p_to <> '' THEN ' AND utc < $2' ELSE '' END
    || CASE WHEN p_user <> '' THEN ' AND lower(user_name) = lower($3)' ELSE '' END
    || CASE WHEN p_area <> '' THEN ' AND area = $4' ELSE '' END
    || CASE WHEN p_text <> '' THEN ' AND strpos(lower(text), lower($5)) > 0' ELSE '' END
    || CASE WHEN p_through > 0 THEN ' AND seq <= $6' ELSE '' END
$$;

-- True when the reviewer narrows nothing (the newest entry aside).
CREATE FUNCTION nebra.review_unfiltered(p_from text, p_to text, p_user text, p_area text, p_text text)
    RETURNS boolean
    LANGUAGE sql IMMUTABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT coalesce(p_from, '') = '' AND coalesce(p_to, '') = '' AND coalesce(p_user, '') = ''
       AND coalesce(p_area, '') = '' AND coalesce(p_text, '') = ''
$$;

-- Sequence numbers run 1, 2, 3... without gaps (verify proves it), so
-- without a filter the newest one is the count, found without a scan.
CREATE FUNCTION nebra.review_audit_count(p_token text, p_from text, p_to text, p_user text, p_area text,
                                         p_text text, p_through bigint) RETURNS bigint
    LANGUAGE plpgsql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_where text := nebra.review_where(p_from, p_to, p_user, p_area, p_text, p_through);
    v_count bigint;
BEGIN
    PERFORM nebra.check_reviewer(p_token);
    IF nebra.review_unfiltered(p_from, p_to, p_user, p_area, p_text) THEN
        EXECUTE 'SELECT coalesce(max(seq), 0) FROM nebra.audit_trail' || v_where INTO v_count
            USING p_from, p_to, p_user, p_area, p_text, p_through;
    ELSE
        EXECUTE 'SELECT count(*) FROM nebra.audit_trail' || v_where INTO v_count
            USING p_from, p_to, p_user, p_area, p_text, p_through;
    END IF;
    RETURN v_count;
END
$$;

-- Up to p_limit entries of the view from p_offset (0 = its first row).
-- Without a filter, in sequence order, a row is found by its sequence
-- number, so a deep page costs what the first does.
CREATE FUNCTION nebra.review_audit_page(p_token text, p_from text, p_to text, p_user text, p_area text,
                                        p_text text, p_through bigint, p_column text, p_descending boolean,
                                        p_offset bigint, p_limit integer)
    RETURNS TABLE (seq bigint, utc text, user_name text, workstation text, area text, entry_text text,
                   mac bytea)
    LANGUAGE plpgsql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_direction text := CASE WHEN p_descending THEN ' DESC' ELSE ' ASC' END;
    v_key text := CASE p_column
        WHEN 'sequence' THEN ''
        WHEN 'time' THEN 'utc'
        WHEN 'user' THEN 'lower(user_name)'
        WHEN 'workstation' THEN 'workstation'
        WHEN 'area' THEN 'area'
        WHEN 'text' THEN 'text' END;
    v_where text := nebra.review_where(p_from, p_to, p_user, p_area, p_text, p_through);
    v_sql text := 'SELECT seq, utc, user_name, workstation, area, text, mac FROM nebra.audit_trail' || v_where;
BEGIN
    PERFORM nebra.check_reviewer(p_token);
    IF v_key IS NULL OR p_offset IS NULL OR p_offset < 0 OR p_limit IS NULL OR p_limit < 0 THEN
        RAISE EXCEPTION 'The audit trail cannot be ordered or paged so.'
            USING ERRCODE = 'invalid_parameter_value';
    END IF;
    IF v_key = '' AND nebra.review_unfiltered(p_from, p_to, p_user, p_area, p_text) THEN
        IF p_descending THEN
            v_sql := v_sql || ' AND seq <= (SELECT coalesce(max(seq), 0) FROM nebra.audit_trail' || v_where
                     || ') - $7 ORDER BY seq DESC LIMIT $8';
        ELSE
            v_sql := v_sql || ' AND seq > $7 ORDER BY seq LIMIT $8';
        END IF;
    ELSE
        v_sql := v_sql || ' ORDER BY ' || CASE WHEN v_key = '' THEN '' ELSE v_key || v_direction || ', ' END
                 || 'seq' || v_direction || ' OFFSET $7 LIMIT $8';
    END IF;
    RETURN QUERY EXECUTE v_sql USING p_from, p_to, p_user, p_area, p_text, p_through, p_offset, p_limit;
END
$$;

-- The chain check of the whole trail, made here with the key that never leaves the server.
CREATE FUNCTION nebra.review_verify_audit(p_token text, OUT ok boolean, OUT entry_count bigint,
                                          OUT first_bad_seq bigint, OUT message text)
    LANGUAGE plpgsql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    PERFORM nebra.check_reviewer(p_token);
    SELECT v.ok, v.entry_count, v.first_bad_seq, v.message INTO ok, entry_count, first_bad_seq, message
        FROM nebra.verify_audit() AS v;
END
$$;

REVOKE ALL ON FUNCTION nebra.check_reviewer(text),
    nebra.review_where(text, text, text, text, text, bigint),
    nebra.review_unfiltered(text, text, text, text, text),
    nebra.review_audit_count(text, text, text, text, text, text, bigint),
    nebra.review_audit_page(text, text, text, text, text, text, bigint, text, boolean, bigint, integer),
    nebra.review_verify_audit(text) FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.review_audit_count(text, text, text, text, text, text, bigint),
    nebra.review_audit_page(text, text, text, text, text, text, bigint, text, boolean, bigint, integer),
    nebra.review_verify_audit(text) TO nebra_client;
