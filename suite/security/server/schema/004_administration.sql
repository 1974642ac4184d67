-- Administration: users, roles, rights, unlocking and the store's policy.
-- Only the owner role (and the administrators it is granted to) may run
-- these. Each makes its change and records it in the audit trail (area
-- "Administration", under the administrator's name) in one transaction:
-- both are committed, or neither.

CREATE FUNCTION nebra.user_id(p_name text) RETURNS bigint
    LANGUAGE plpgsql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_id bigint := (SELECT id FROM nebra.users WHERE name_key = nebra.name_key(p_name));
BEGIN
    IF v_id IS NULL THEN
        RAISE EXCEPTION 'There is no user "%".', p_name USING ERRCODE = 'no_data_found';
    END IF;
    RETURN v_id;
END
$$;

CREATE FUNCTION nebra.role_id(p_name text) RETURNS bigint
    LANGUAGE plpgsql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_id bigint := (SELECT id FROM nebra.roles WHERE name_key = nebra.name_key(p_name));
BEGIN
    IF v_id IS NULL THEN
        RAISE EXCEPTION 'There is no role "%".', p_name USING ERRCODE = 'no_data_found';
    END IF;
    RETURN v_id;
END
$$;

CREATE FUNCTION nebra.hash_password(p_password text) RETURNS text
    LANGUAGE sql VOLATILE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT nebra_crypto.crypt(p_password, nebra_crypto.gen_salt('bf', (SELECT hash_cost FROM nebra.policy WHERE id = 1)))
$$;

CREATE FUNCTION nebra.admin_add_user(p_actor text, p_workstation text, p_name text, p_full_name text,
                                     p_password text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF EXISTS (SELECT 1 FROM nebra.users WHERE name_key = nebra.name_key(p_name)) THEN
        RAISE EXCEPTION 'There is already a user "%".', p_name USING ERRCODE = 'unique_violation';
    END IF;
    INSERT INTO nebra.users(name, name_key, full_name, password_hash)
        VALUES (p_name, nebra.name_key(p_name), coalesce(p_full_name, ''),
                CASE WHEN coalesce(p_password, '') = '' THEN '' ELSE nebra.hash_password(p_password) END);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('User added: %s (%s)', p_name, coalesce(p_full_name, '')));
END
$$;

CREATE FUNCTION nebra.admin_set_disabled(p_actor text, p_workstation text, p_name text, p_disabled boolean)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.users SET disabled = p_disabled WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format(CASE WHEN p_disabled THEN 'User disabled: %s' ELSE 'User enabled: %s' END,
                                     p_name));
END
$$;

CREATE FUNCTION nebra.admin_set_password(p_actor text, p_workstation text, p_name text, p_password text,
                                         p_must_change boolean) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF coalesce(p_password, '') = '' THEN
        RAISE EXCEPTION 'The password is empty.' USING ERRCODE = 'invalid_parameter_value';
    END IF;
    UPDATE nebra.users SET password_hash = nebra.hash_password(p_password), must_change_password = p_must_change
        WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format(CASE WHEN p_must_change
                                          THEN 'Password reset for %s; to be changed at the next log in'
                                          ELSE 'Password set for %s' END, p_name));
END
$$;

CREATE FUNCTION nebra.admin_unlock(p_actor text, p_workstation text, p_name text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.users SET locked = false, failed_logins = 0 WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration', format('Account unlocked: %s', p_name));
END
$$;

CREATE FUNCTION nebra.admin_grant(p_actor text, p_workstation text, p_user text, p_area text, p_operation text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.user_rights VALUES (nebra.user_id(p_user), p_area, p_operation) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Right granted to %s: %s/%s', p_user, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_revoke(p_actor text, p_workstation text, p_user text, p_area text, p_operation text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.user_rights
        WHERE user_id = nebra.user_id(p_user) AND area = p_area AND operation = p_operation;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Right revoked from %s: %s/%s', p_user, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_add_role(p_actor text, p_workstation text, p_role text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.roles(name, name_key) VALUES (p_role, nebra.name_key(p_role));
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration', format('Role added: %s', p_role));
END
$$;

CREATE FUNCTION nebra.admin_grant_to_role(p_actor text, p_workstation text, p_role text, p_area text,
                                          p_operation text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.role_rights VALUES (nebra.role_id(p_role), p_area, p_operation) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Right granted to role %s: %s/%s', p_role, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_assign_role(p_actor text, p_workstation text, p_user text, p_role text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.user_roles VALUES (nebra.user_id(p_user), nebra.role_id(p_role)) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Role %s given to %s', p_role, p_user));
END
$$;

CREATE FUNCTION nebra.admin_set_policy(p_actor text, p_workstation text, p_lockout_threshold integer,
                                       p_hash_cost integer) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.policy SET lockout_threshold = p_lockout_threshold, hash_cost = p_hash_cost WHERE id = 1;
    RETURN nebra.append_audit(p_actor, p_workstation, 'Administration',
                              format('Policy set: lockout after %s failed log ins, password hash cost %s',
                                     p_lockout_threshold, p_hash_cost));
END
$$;

REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.log_in(text, text, text), nebra.is_allowed(text, text, text),
    nebra.record_audit(text, text, text), nebra.change_password(text, text, text),
    nebra.log_out(text, text) TO nebra_client;
