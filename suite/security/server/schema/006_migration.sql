-- Moving a site from the embedded store: its audit entries are copied in
-- their order with their own times, users and workstations, and chained
-- anew with this server's key; its users keep their state but not their
-- passwords (the embedded store's hashes cannot be checked here).

-- Appends one entry with the time given (NULL: now). append_audit is now this with NULL.
CREATE FUNCTION nebra.append_entry(p_utc text, p_user text, p_workstation text, p_area text, p_text text)
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
    v_utc := coalesce(p_utc, to_char(clock_timestamp() AT TIME ZONE 'UTC', 'YYYY-MM-DD"T"HH24:MI:SS.MS"Z"'));
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

CREATE OR REPLACE FUNCTION nebra.append_audit(p_user text, p_workstation text, p_area text, p_text text)
    RETURNS bigint
    LANGUAGE sql
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT nebra.append_entry(NULL, p_user, p_workstation, p_area, p_text) $$;

-- Only into a trail that holds nothing but the migration's own entries: refused once a workstation has logged in.
CREATE FUNCTION nebra.admin_import_entry(p_utc text, p_user text, p_workstation text, p_area text, p_text text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF EXISTS (SELECT 1 FROM nebra.sessions) THEN
        RAISE EXCEPTION 'This store is in use already: entries can only be brought into a new one.'
            USING ERRCODE = 'object_not_in_prerequisite_state';
    END IF;
    RETURN nebra.append_entry(p_utc, p_user, p_workstation, p_area, p_text);
END
$$;

CREATE FUNCTION nebra.admin_import_user(p_actor text, p_workstation text, p_name text, p_full_name text,
                                        p_disabled boolean, p_locked boolean, p_failed_logins integer)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.users(name, name_key, full_name, disabled, locked, failed_logins, must_change_password)
        VALUES (p_name, nebra.name_key(p_name), coalesce(p_full_name, ''), p_disabled, p_locked, p_failed_logins, true);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('User migrated: %s (%s); no password until one is set', p_name,
                                     coalesce(p_full_name, '')));
END
$$;

-- An administrator's note in the trail (what a migration brought in, for instance).
CREATE FUNCTION nebra.admin_note(p_actor text, p_workstation text, p_text text) RETURNS bigint
    LANGUAGE sql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT nebra.append_audit(p_actor, p_workstation, 'Administration', p_text) $$;

REVOKE ALL ON FUNCTION nebra.append_entry(text, text, text, text, text),
    nebra.admin_import_entry(text, text, text, text, text),
    nebra.admin_import_user(text, text, text, text, boolean, boolean, integer),
    nebra.admin_note(text, text, text) FROM PUBLIC;
