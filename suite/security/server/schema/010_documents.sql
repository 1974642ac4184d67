-- The newest fingerprint of every document of the data folders. Only the
-- owner reaches the table: a workstation writes a row only through
-- record_document, which records the audit entry that tells of it in the
-- same transaction, and reads the rows through document_records. The audit
-- trail stays the evidence; the table makes look-ups fast.

CREATE TABLE nebra.document_records (
    path text PRIMARY KEY,
    sha256 bytea NOT NULL CHECK (octet_length(sha256) IN (0, 32)),
    size bigint NOT NULL,
    modified bigint NOT NULL,
    event text NOT NULL CHECK (event IN ('recorded', 'suite', 'outside', 'unwatched', 'accepted', 'removed',
                                         'renamed')),
    seq bigint NOT NULL -- the entry that recorded it
);

-- The entry's text, as the workstation's embedded store words it too.
CREATE FUNCTION nebra.document_text(p_event text, p_path text, p_sha256 bytea, p_size bigint,
                                    p_modified bigint, p_previous_path text, p_program text, p_reason text,
                                    p_user text) RETURNS text
    LANGUAGE plpgsql IMMUTABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_what text := format('%s sha256=%s size=%s modified=%s', p_path, encode(p_sha256, 'hex'), p_size,
                          to_char(timestamp 'epoch' + p_modified * interval '1 millisecond',
                                  'YYYY-MM-DD"T"HH24:MI:SS.MS"Z"'));
BEGIN
    RETURN CASE p_event
        WHEN 'recorded' THEN 'Document recorded: ' || v_what
        WHEN 'suite' THEN format('Document changed: %s by %s', v_what, p_program)
        WHEN 'outside' THEN format('Document changed outside the suite: %s (seen while %s was logged in)',
                                   v_what, p_user)
        WHEN 'unwatched' THEN format('Document changed while nothing recorded it: %s (found while %s was logged in)',
                                     v_what, p_user)
        WHEN 'accepted' THEN format('Document change accepted: %s reason: %s', v_what, p_reason)
        WHEN 'removed' THEN 'Document removed: ' || p_path
        WHEN 'renamed' THEN format('Document renamed: %s -> %s', p_previous_path, p_path)
    END;
END
$$;

-- Records the entry for the session's user and makes the fingerprint the
-- path's newest record, in the caller's one transaction. Accepting a
-- change needs the right (Documents, AcceptChange).
CREATE FUNCTION nebra.record_document(p_token text, p_event text, p_path text, p_sha256 bytea, p_size bigint,
                                      p_modified bigint, p_previous_path text, p_program text, p_reason text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET lock_timeout = '5s'
    AS $$
DECLARE
    v_session nebra.sessions := nebra.session_of(p_token);
    v_user text;
    v_seq bigint;
BEGIN
    IF v_session.user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    IF p_event = 'accepted' AND NOT nebra.is_allowed(p_token, 'Documents', 'AcceptChange') THEN
        RAISE EXCEPTION 'You do not have the right to accept changes of documents.'
            USING ERRCODE = 'insufficient_privilege';
    END IF;
    IF p_path IS NULL OR p_path = '' OR p_event IS NULL THEN
        RAISE EXCEPTION 'a document entry needs a path and an event' USING ERRCODE = 'invalid_parameter_value';
    END IF;
    v_user := (SELECT name FROM nebra.users WHERE id = v_session.user_id);
    v_seq := nebra.append_audit(v_user, v_session.workstation, 'Documents',
                                nebra.document_text(p_event, p_path, coalesce(p_sha256, ''::bytea),
                                                    coalesce(p_size, -1), coalesce(p_modified, 0), p_previous_path,
                                                    p_program, p_reason, v_user));
    IF p_event = 'renamed' THEN
        DELETE FROM nebra.document_records WHERE path = p_previous_path;
    END IF;
    INSERT INTO nebra.document_records VALUES (p_path, coalesce(p_sha256, ''::bytea), coalesce(p_size, -1),
                                               coalesce(p_modified, 0), p_event, v_seq)
        ON CONFLICT (path) DO UPDATE SET sha256 = excluded.sha256, size = excluded.size,
                                         modified = excluded.modified, event = excluded.event, seq = excluded.seq;
    RETURN v_seq;
END
$$;

-- The newest record of every path, for a workstation with an open session.
CREATE FUNCTION nebra.document_records(p_token text)
    RETURNS TABLE (path text, sha256 bytea, size bigint, modified bigint, event text, seq bigint)
    LANGUAGE plpgsql VOLATILE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET lock_timeout = '5s'
    AS $$
BEGIN
    IF (nebra.session_of(p_token)).user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    RETURN QUERY SELECT d.path, d.sha256, d.size, d.modified, d.event, d.seq FROM nebra.document_records d;
END
$$;

-- The same for the administrator's check of the documents.
CREATE FUNCTION nebra.admin_document_records()
    RETURNS TABLE (path text, sha256 bytea, size bigint, modified bigint, event text, seq bigint)
    LANGUAGE sql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT d.path, d.sha256, d.size, d.modified, d.event, d.seq FROM nebra.document_records d $$;

REVOKE ALL ON nebra.document_records FROM PUBLIC;
REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.record_document(text, text, text, bytea, bigint, bigint, text, text, text),
    nebra.document_records(text) TO nebra_client;
GRANT EXECUTE ON FUNCTION nebra.admin_document_records() TO nebra_admin;
