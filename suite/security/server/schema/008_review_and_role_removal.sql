-- What the administrator reads and the changes that undo a grant: the
-- users with their state, roles and rights (never a password hash), the
-- audit trail's entries, taking a right from a role, taking a role from a
-- user, and sealing the chain head afresh. Owner-only, like the rest of the
-- administration; each change records its entry in the same transaction.

CREATE FUNCTION nebra.admin_list_users()
    RETURNS TABLE (name text, full_name text, disabled boolean, locked boolean, failed_logins integer,
                   must_change_password boolean, has_password boolean, roles text[], rights text[])
    LANGUAGE sql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT u.name, u.full_name, u.disabled, u.locked, u.failed_logins, u.must_change_password,
       u.password_hash <> '',
       ARRAY(SELECT r.name FROM nebra.user_roles ur JOIN nebra.roles r ON r.id = ur.role_id
             WHERE ur.user_id = u.id ORDER BY r.name),
       ARRAY(SELECT ri.area || '/' || ri.operation FROM nebra.user_rights ri
             WHERE ri.user_id = u.id ORDER BY ri.area, ri.operation)
FROM nebra.users u
ORDER BY u.name_key
$$;

-- One page of the trail, after entry p_after; the reader pages through it in one snapshot.
CREATE FUNCTION nebra.admin_audit_entries(p_after bigint, p_limit integer)
    RETURNS SETOF nebra.audit_trail
    LANGUAGE sql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT * FROM nebra.audit_trail WHERE seq > p_after ORDER BY seq LIMIT p_limit
$$;

CREATE FUNCTION nebra.admin_revoke_from_role(p_actor text, p_workstation text, p_role text, p_area text,
                                             p_operation text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.role_rights
        WHERE role_id = nebra.role_id(p_role) AND area = p_area AND operation = p_operation;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Right revoked from role %s: %s/%s', p_role, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_unassign_role(p_actor text, p_workstation text, p_user text, p_role text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.user_roles WHERE user_id = nebra.user_id(p_user) AND role_id = nebra.role_id(p_role);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Role %s taken from %s', p_role, p_user));
END
$$;

-- The head lives beside the trail here, and every append refuses a trail
-- that no longer ends at it. After the newest entries were removed (by the
-- owner, with the trigger dropped) nothing could be recorded again; the
-- administrator, having looked, moves the head back to the newest entry
-- that is left and records that it did. An altered entry stays altered:
-- verify still names it.
CREATE FUNCTION nebra.admin_reseal_head(p_actor text, p_workstation text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_head nebra.audit_head;
    v_seq bigint;
    v_mac bytea;
BEGIN
    SELECT * INTO STRICT v_head FROM nebra.audit_head WHERE id = 1 FOR UPDATE;
    SELECT seq, mac INTO v_seq, v_mac FROM nebra.audit_trail ORDER BY seq DESC LIMIT 1;
    v_seq := coalesce(v_seq, 0);
    v_mac := coalesce(v_mac, nebra.genesis_mac());
    IF v_head.seq <> v_seq OR v_head.mac <> v_mac THEN
        ALTER TABLE nebra.audit_head DISABLE TRIGGER audit_head_forward_only;
        UPDATE nebra.audit_head SET seq = v_seq, mac = v_mac WHERE id = 1;
        ALTER TABLE nebra.audit_head ENABLE TRIGGER audit_head_forward_only;
    END IF;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              'Audit chain head sealed afresh by the administrator');
END
$$;

REVOKE ALL ON FUNCTION nebra.admin_list_users(), nebra.admin_audit_entries(bigint, integer),
    nebra.admin_revoke_from_role(text, text, text, text, text), nebra.admin_unassign_role(text, text, text, text),
    nebra.admin_reseal_head(text, text) FROM PUBLIC;
