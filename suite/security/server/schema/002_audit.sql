-- The audit trail: append-only by privileges and by trigger, each entry
-- chained to the one before by a MAC keyed with the site key, computed here
-- in the server. The head row is the single point every append locks, so
-- sequence numbers have no gaps however many workstations write at once.

CREATE TABLE nebra.audit_trail (
    seq bigint PRIMARY KEY CHECK (seq > 0),
    utc text NOT NULL,
    user_name text NOT NULL,
    workstation text NOT NULL,
    area text NOT NULL,
    text text NOT NULL,
    mac bytea NOT NULL
);

CREATE TABLE nebra.audit_head (
    id integer PRIMARY KEY CHECK (id = 1),
    seq bigint NOT NULL,
    mac bytea NOT NULL
);

CREATE FUNCTION nebra.refuse_audit_change() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    RAISE EXCEPTION 'audit trail entries cannot be changed or deleted'
        USING ERRCODE = 'insufficient_privilege';
END
$$;

CREATE TRIGGER audit_trail_append_only BEFORE UPDATE OR DELETE ON nebra.audit_trail
    FOR EACH ROW EXECUTE FUNCTION nebra.refuse_audit_change();
CREATE TRIGGER audit_trail_no_truncate BEFORE TRUNCATE ON nebra.audit_trail
    FOR EACH STATEMENT EXECUTE FUNCTION nebra.refuse_audit_change();

-- The head only ever moves one entry forward.
CREATE FUNCTION nebra.refuse_head_rewind() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF TG_OP <> 'UPDATE' OR NEW.seq <> OLD.seq + 1 THEN
        RAISE EXCEPTION 'the audit chain head only moves forward'
            USING ERRCODE = 'insufficient_privilege';
    END IF;
    RETURN NEW;
END
$$;

CREATE TRIGGER audit_head_forward_only BEFORE UPDATE OR DELETE ON nebra.audit_head
    FOR EACH ROW EXECUTE FUNCTION nebra.refuse_head_rewind();
CREATE TRIGGER audit_head_no_truncate BEFORE TRUNCATE ON nebra.audit_head
    FOR EACH STATEMENT EXECUTE FUNCTION nebra.refuse_audit_change();

-- Every field is length-prefixed, so no two different entries share a message.
CREATE FUNCTION nebra.audit_mac(p_key bytea, p_seq bigint, p_utc text, p_user text, p_workstation text,
                                p_area text, p_text text, p_previous bytea) RETURNS bytea
    LANGUAGE sql IMMUTABLE STRICT
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT nebra_crypto.hmac(
    convert_to(format('%s|%s:%s|%s:%s|%s:%s|%s:%s|%s:%s|%s', p_seq,
                      length(p_utc), p_utc, length(p_user), p_user, length(p_workstation), p_workstation,
                      length(p_area), p_area, length(p_text), p_text, encode(p_previous, 'hex')), 'UTF8'),
    p_key, 'sha256')
$$;

CREATE FUNCTION nebra.genesis_mac() RETURNS bytea
    LANGUAGE sql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT nebra_crypto.hmac(convert_to('nebra audit trail', 'UTF8'), mac_key, 'sha256')
FROM nebra.site_key WHERE id = 1
$$;

INSERT INTO nebra.audit_head VALUES (1, 0, nebra.genesis_mac());

-- Appends one entry after the newest; the caller's transaction commits it.
-- Refuses to chain onto a trail that no longer ends at the head (entries cut
-- off or slipped in), so such a loss stays visible.
CREATE FUNCTION nebra.append_audit(p_user text, p_workstation text, p_area text, p_text text)
    RETURNS bigint
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_head nebra.audit_head;
    v_newest bytea;
    v_utc text;
    v_mac bytea;
BEGIN
    SELECT * INTO STRICT v_head FROM nebra.audit_head WHERE id = 1 FOR UPDATE;
    IF v_head.seq > 0 THEN
        SELECT mac INTO v_newest FROM nebra.audit_trail WHERE seq = v_head.seq;
    ELSE
        v_newest := nebra.genesis_mac();
    END IF;
    IF v_newest IS DISTINCT FROM v_head.mac
       OR EXISTS (SELECT 1 FROM nebra.audit_trail WHERE seq > v_head.seq) THEN
        RAISE EXCEPTION 'the audit trail does not end at its chain head: entries were removed or added'
            USING ERRCODE = 'data_corrupted';
    END IF;
    v_utc := to_char(clock_timestamp() AT TIME ZONE 'UTC', 'YYYY-MM-DD"T"HH24:MI:SS.MS"Z"');
    v_mac := nebra.audit_mac((SELECT mac_key FROM nebra.site_key WHERE id = 1), v_head.seq + 1, v_utc,
                             coalesce(p_user, ''), coalesce(p_workstation, ''), coalesce(p_area, ''),
                             coalesce(p_text, ''), v_head.mac);
    INSERT INTO nebra.audit_trail VALUES (v_head.seq + 1, v_utc, coalesce(p_user, ''),
                                          coalesce(p_workstation, ''), coalesce(p_area, ''),
                                          coalesce(p_text, ''), v_mac);
    UPDATE nebra.audit_head SET seq = v_head.seq + 1, mac = v_mac WHERE id = 1;
    RETURN v_head.seq + 1;
END
$$;

-- Checks every entry's MAC, that the sequence runs 1, 2, 3... without gaps,
-- and that the trail ends at the head.
CREATE FUNCTION nebra.verify_audit(OUT ok boolean, OUT entry_count bigint, OUT first_bad_seq bigint,
                                   OUT message text)
    LANGUAGE plpgsql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_key bytea := (SELECT mac_key FROM nebra.site_key WHERE id = 1);
    v_head nebra.audit_head;
    v_previous bytea := nebra.genesis_mac();
    v_entry nebra.audit_trail;
BEGIN
    ok := true; entry_count := 0; first_bad_seq := 0; message := '';
    FOR v_entry IN SELECT * FROM nebra.audit_trail ORDER BY seq LOOP
        IF v_entry.seq <> entry_count + 1 THEN
            ok := false; first_bad_seq := entry_count + 1;
            message := format('Entry %s is missing.', entry_count + 1);
            RETURN;
        END IF;
        IF nebra.audit_mac(v_key, v_entry.seq, v_entry.utc, v_entry.user_name, v_entry.workstation,
                           v_entry.area, v_entry.text, v_previous) <> v_entry.mac THEN
            ok := false; first_bad_seq := v_entry.seq;
            message := format('Entry %s has been altered, or an entry before it removed.', v_entry.seq);
            RETURN;
        END IF;
        v_previous := v_entry.mac;
        entry_count := v_entry.seq;
    END LOOP;
    SELECT * INTO STRICT v_head FROM nebra.audit_head WHERE id = 1;
    IF v_head.seq <> entry_count OR v_head.mac <> v_previous THEN
        ok := false;
        message := format('The chain head seals entry %s, but the trail ends at entry %s: entries were removed.',
                          v_head.seq, entry_count);
        RETURN;
    END IF;
    message := format('The audit trail is intact: %s entries.', entry_count);
END
$$;

REVOKE ALL ON ALL TABLES IN SCHEMA nebra FROM PUBLIC;
REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
