-- Sessions that the server ends, bounds on every call, one password policy,
-- and administrators who are who the server says they are.
--
-- A session token is good while it is used: each call that names it marks
-- it used, and a token unused for longer than the site's idle time-out is
-- ended (and the end recorded) by the first call that finds it so. The
-- workstation learns the time-out and the password policy at log-in, so
-- its own timer and its dialog agree with the server.
--
-- The functions the client role may call bound their own lock waits, so a
-- client that holds the audit trail's head in a transaction of its own
-- makes the others give up with a message instead of waiting for ever,
-- whatever the waiting caller set for itself.
--
-- Administrators are members of nebra_admin, which may run the
-- administration functions and nothing else: it reads no table (not the
-- site key, so it cannot chain entries of its own), and every change is
-- recorded under the server's session_user, never a name the caller gives.

ALTER TABLE nebra.policy
    ADD COLUMN idle_minutes integer NOT NULL DEFAULT 15 CHECK (idle_minutes BETWEEN 1 AND 1440),
    ADD COLUMN password_minimum_length integer NOT NULL DEFAULT 8
        CHECK (password_minimum_length BETWEEN 1 AND 128);

ALTER TABLE nebra.sessions ADD COLUMN last_used_utc timestamptz NOT NULL DEFAULT clock_timestamp();

-- Raises with the sentence the administration tool gives when the password
-- breaks the site's rules: its length, and not the user's own name.
CREATE FUNCTION nebra.check_password_policy(p_name text, p_password text) RETURNS void
    LANGUAGE plpgsql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_minimum integer := (SELECT password_minimum_length FROM nebra.policy WHERE id = 1);
    v_length integer := length(coalesce(p_password, ''));
BEGIN
    IF v_length = 0 THEN
        RAISE EXCEPTION 'The password must not be empty.' USING ERRCODE = 'invalid_parameter_value';
    ELSIF v_length < v_minimum THEN
        RAISE EXCEPTION 'The password must be at least % characters long.', v_minimum
            USING ERRCODE = 'invalid_parameter_value';
    ELSIF v_length > 256 THEN
        RAISE EXCEPTION 'The password must be at most 256 characters long.'
            USING ERRCODE = 'invalid_parameter_value';
    ELSIF nebra.name_key(p_password) = nebra.name_key(btrim(p_name)) THEN
        RAISE EXCEPTION 'The password must not be the user name.' USING ERRCODE = 'invalid_parameter_value';
    END IF;
END
$$;

-- The open session of a token, marked used now (to the nearest ten
-- seconds: most calls then write nothing); nothing for an unknown or ended
-- token. A token idle for longer than the time-out is ended here, and its
-- end recorded, once.
CREATE OR REPLACE FUNCTION nebra.session_of(p_token text) RETURNS nebra.sessions
    LANGUAGE plpgsql VOLATILE
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_session nebra.sessions;
    v_idle integer := (SELECT idle_minutes FROM nebra.policy WHERE id = 1);
BEGIN
    IF p_token IS NULL OR p_token !~ '^[0-9a-f]{64}$' THEN
        RETURN NULL;
    END IF;
    SELECT * INTO v_session FROM nebra.sessions
        WHERE token_hash = nebra_crypto.digest(decode(p_token, 'hex'), 'sha256') AND ended_utc IS NULL;
    IF NOT FOUND THEN
        RETURN NULL;
    END IF;
    IF v_session.last_used_utc < clock_timestamp() - make_interval(mins => v_idle) THEN
        UPDATE nebra.sessions SET ended_utc = clock_timestamp()
            WHERE token_hash = v_session.token_hash AND ended_utc IS NULL;
        IF FOUND THEN
            PERFORM nebra.append_audit((SELECT name FROM nebra.users WHERE id = v_session.user_id),
                                       v_session.workstation, 'Security',
                                       format('Session timed out on the server after %s minutes without activity',
                                              v_idle));
        END IF;
        RETURN NULL;
    END IF;
    IF v_session.last_used_utc < clock_timestamp() - interval '10 seconds' THEN
        UPDATE nebra.sessions SET last_used_utc = clock_timestamp()
            WHERE token_hash = v_session.token_hash AND ended_utc IS NULL
            RETURNING * INTO v_session;
        IF NOT FOUND THEN
            RETURN NULL; -- ended meanwhile
        END IF;
    END IF;
    RETURN v_session;
END
$$;

CREATE OR REPLACE FUNCTION nebra.is_allowed(p_token text, p_area text, p_operation text) RETURNS boolean
    LANGUAGE sql VOLATILE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
WITH s AS (SELECT user_id FROM nebra.session_of(p_token) WHERE user_id IS NOT NULL),
     u AS (SELECT id FROM nebra.users WHERE id IN (SELECT user_id FROM s) AND NOT disabled AND NOT locked)
SELECT EXISTS (SELECT 1 FROM nebra.user_rights r JOIN u ON r.user_id = u.id
               WHERE r.area IN (p_area, '*') AND r.operation IN (p_operation, '*'))
    OR EXISTS (SELECT 1 FROM nebra.user_roles ur JOIN u ON ur.user_id = u.id
               JOIN nebra.role_rights rr ON rr.role_id = ur.role_id
               WHERE rr.area IN (p_area, '*') AND rr.operation IN (p_operation, '*'))
$$;

CREATE OR REPLACE FUNCTION nebra.check_reviewer(p_token text) RETURNS void
    LANGUAGE plpgsql VOLATILE
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF p_token IS NULL OR p_token = '' OR NOT nebra.is_allowed(p_token, 'Security', 'ViewAuditTrail') THEN
        RAISE EXCEPTION 'You do not have the right to view the audit trail.'
            USING ERRCODE = 'insufficient_privilege';
    END IF;
END
$$;

ALTER FUNCTION nebra.review_audit_count(text, text, text, text, text, text, bigint) VOLATILE;
ALTER FUNCTION nebra.review_audit_page(text, text, text, text, text, text, bigint, text, boolean, bigint, integer)
    VOLATILE;
ALTER FUNCTION nebra.review_verify_audit(text) VOLATILE;

-- Marks the session used (the user is at work on the workstation); false when it has ended.
CREATE FUNCTION nebra.touch_session(p_token text) RETURNS boolean
    LANGUAGE sql VOLATILE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT (nebra.session_of(p_token)).user_id IS NOT NULL $$;

-- The log-in now also tells the workstation the site's idle time-out and password rules.
DROP FUNCTION nebra.log_in(text, text, text);
CREATE FUNCTION nebra.log_in(p_name text, p_password text, p_workstation text,
                             OUT status text, OUT token text, OUT user_name text, OUT full_name text,
                             OUT must_change_password boolean, OUT idle_minutes integer,
                             OUT password_minimum_length integer)
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_user nebra.users;
    v_token bytea;
BEGIN
    status := 'refused'; must_change_password := false;
    SELECT p.idle_minutes, p.password_minimum_length INTO idle_minutes, password_minimum_length
        FROM nebra.policy p WHERE p.id = 1;
    SELECT * INTO v_user FROM nebra.users WHERE name_key = nebra.name_key(p_name) FOR UPDATE;
    IF NOT FOUND THEN
        PERFORM nebra_crypto.crypt(coalesce(p_password, ''),
                                   nebra_crypto.gen_salt('bf', (SELECT hash_cost FROM nebra.policy)));
        PERFORM nebra.append_audit(nebra.unknown_user_label(coalesce(p_name, '')), p_workstation, 'Security',
                                   'Failed log in: unknown user');
        RETURN;
    END IF;
    IF v_user.locked THEN
        status := 'locked';
        PERFORM nebra.append_audit(v_user.name, p_workstation, 'Security', 'Log in refused: account locked');
        RETURN;
    END IF;
    IF v_user.disabled THEN
        status := 'disabled';
        PERFORM nebra.append_audit(v_user.name, p_workstation, 'Security', 'Log in refused: account disabled');
        RETURN;
    END IF;
    IF v_user.password_hash = '' THEN
        PERFORM nebra.append_audit(v_user.name, p_workstation, 'Security', 'Failed log in: no password set');
        RETURN;
    END IF;
    IF nebra_crypto.crypt(coalesce(p_password, ''), v_user.password_hash) <> v_user.password_hash THEN
        PERFORM nebra.count_failure(v_user, p_workstation, 'Failed log in: wrong password');
        RETURN;
    END IF;
    v_token := nebra_crypto.gen_random_bytes(32);
    UPDATE nebra.users SET failed_logins = 0 WHERE id = v_user.id;
    INSERT INTO nebra.sessions(token_hash, user_id, workstation)
        VALUES (nebra_crypto.digest(v_token, 'sha256'), v_user.id, coalesce(p_workstation, ''));
    PERFORM nebra.append_audit(v_user.name, p_workstation, 'Security', 'Log in');
    status := 'success'; token := encode(v_token, 'hex');
    user_name := v_user.name; full_name := v_user.full_name;
    must_change_password := v_user.must_change_password;
END
$$;

CREATE OR REPLACE FUNCTION nebra.change_password(p_token text, p_current text, p_new text) RETURNS text
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_session nebra.sessions := nebra.session_of(p_token);
    v_user nebra.users;
BEGIN
    IF v_session.user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    SELECT * INTO STRICT v_user FROM nebra.users WHERE id = v_session.user_id FOR UPDATE;
    IF v_user.locked OR v_user.disabled
       OR nebra_crypto.crypt(coalesce(p_current, ''), v_user.password_hash) <> v_user.password_hash THEN
        IF nebra.count_failure(v_user, v_session.workstation,
                               'Password change refused: current password incorrect') THEN
            UPDATE nebra.sessions SET ended_utc = clock_timestamp() WHERE token_hash = v_session.token_hash;
            PERFORM nebra.append_audit(v_user.name, v_session.workstation, 'Security',
                                       'Session ended: the account was locked');
            RETURN 'locked';
        END IF;
        RETURN 'incorrect';
    END IF;
    IF p_new IS NULL OR p_new = '' OR p_new = p_current THEN
        RETURN 'same';
    END IF;
    PERFORM nebra.check_password_policy(v_user.name, p_new);
    UPDATE nebra.users
        SET password_hash = nebra_crypto.crypt(p_new, nebra_crypto.gen_salt('bf', (SELECT hash_cost FROM nebra.policy))),
            failed_logins = 0, must_change_password = false
        WHERE id = v_user.id;
    PERFORM nebra.append_audit(v_user.name, v_session.workstation, 'Security', 'Password changed');
    RETURN 'changed';
END
$$;

DROP FUNCTION nebra.admin_add_user(text, text, text, text, text);
DROP FUNCTION nebra.admin_set_disabled(text, text, text, boolean);
DROP FUNCTION nebra.admin_set_password(text, text, text, text, boolean);
DROP FUNCTION nebra.admin_unlock(text, text, text);
DROP FUNCTION nebra.admin_grant(text, text, text, text, text);
DROP FUNCTION nebra.admin_revoke(text, text, text, text, text);
DROP FUNCTION nebra.admin_add_role(text, text, text);
DROP FUNCTION nebra.admin_grant_to_role(text, text, text, text, text);
DROP FUNCTION nebra.admin_assign_role(text, text, text, text);
DROP FUNCTION nebra.admin_set_policy(text, text, integer, integer);
DROP FUNCTION nebra.admin_import_user(text, text, text, text, boolean, boolean, integer);
DROP FUNCTION nebra.admin_note(text, text, text);
DROP FUNCTION nebra.admin_revoke_from_role(text, text, text, text, text);
DROP FUNCTION nebra.admin_unassign_role(text, text, text, text);
DROP FUNCTION nebra.admin_reseal_head(text, text);

CREATE FUNCTION nebra.admin_add_user(p_workstation text, p_name text, p_full_name text,
                                     p_password text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF EXISTS (SELECT 1 FROM nebra.users WHERE name_key = nebra.name_key(p_name)) THEN
        RAISE EXCEPTION 'There is already a user "%".', p_name USING ERRCODE = 'unique_violation';
    END IF;
    IF coalesce(p_password, '') <> '' THEN
        PERFORM nebra.check_password_policy(p_name, p_password);
    END IF;
    INSERT INTO nebra.users(name, name_key, full_name, password_hash)
        VALUES (p_name, nebra.name_key(p_name), coalesce(p_full_name, ''),
                CASE WHEN coalesce(p_password, '') = '' THEN '' ELSE nebra.hash_password(p_password) END);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('User added: %s (%s)', p_name, coalesce(p_full_name, '')));
END
$$;

CREATE FUNCTION nebra.admin_set_disabled(p_workstation text, p_name text, p_disabled boolean)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.users SET disabled = p_disabled WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format(CASE WHEN p_disabled THEN 'User disabled: %s' ELSE 'User enabled: %s' END,
                                     p_name));
END
$$;

CREATE FUNCTION nebra.admin_set_password(p_workstation text, p_name text, p_password text,
                                         p_must_change boolean) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    PERFORM nebra.user_id(p_name);
    PERFORM nebra.check_password_policy(p_name, p_password);
    UPDATE nebra.users SET password_hash = nebra.hash_password(p_password), must_change_password = p_must_change
        WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format(CASE WHEN p_must_change
                                          THEN 'Password reset for %s; to be changed at the next log in'
                                          ELSE 'Password set for %s' END, p_name));
END
$$;

CREATE FUNCTION nebra.admin_unlock(p_workstation text, p_name text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.users SET locked = false, failed_logins = 0 WHERE id = nebra.user_id(p_name);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration', format('Account unlocked: %s', p_name));
END
$$;

CREATE FUNCTION nebra.admin_grant(p_workstation text, p_user text, p_area text, p_operation text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.user_rights VALUES (nebra.user_id(p_user), p_area, p_operation) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Right granted to %s: %s/%s', p_user, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_revoke(p_workstation text, p_user text, p_area text, p_operation text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.user_rights
        WHERE user_id = nebra.user_id(p_user) AND area = p_area AND operation = p_operation;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Right revoked from %s: %s/%s', p_user, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_add_role(p_workstation text, p_role text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.roles(name, name_key) VALUES (p_role, nebra.name_key(p_role));
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration', format('Role added: %s', p_role));
END
$$;

CREATE FUNCTION nebra.admin_grant_to_role(p_workstation text, p_role text, p_area text,
                                          p_operation text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.role_rights VALUES (nebra.role_id(p_role), p_area, p_operation) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Right granted to role %s: %s/%s', p_role, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_assign_role(p_workstation text, p_user text, p_role text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.user_roles VALUES (nebra.user_id(p_user), nebra.role_id(p_role)) ON CONFLICT DO NOTHING;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Role %s given to %s', p_role, p_user));
END
$$;

CREATE FUNCTION nebra.admin_set_policy(p_workstation text, p_lockout_threshold integer,
                                       p_hash_cost integer) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    UPDATE nebra.policy SET lockout_threshold = p_lockout_threshold, hash_cost = p_hash_cost WHERE id = 1;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Policy set: lockout after %s failed log ins, password hash cost %s',
                                     p_lockout_threshold, p_hash_cost));
END
$$;

CREATE FUNCTION nebra.admin_import_user(p_workstation text, p_name text, p_full_name text,
                                        p_disabled boolean, p_locked boolean, p_failed_logins integer)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    INSERT INTO nebra.users(name, name_key, full_name, disabled, locked, failed_logins, must_change_password)
        VALUES (p_name, nebra.name_key(p_name), coalesce(p_full_name, ''), p_disabled, p_locked, p_failed_logins, true);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('User migrated: %s (%s); no password until one is set', p_name,
                                     coalesce(p_full_name, '')));
END
$$;

CREATE FUNCTION nebra.admin_note(p_workstation text, p_text text) RETURNS bigint
    LANGUAGE sql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT nebra.append_audit(session_user, p_workstation, 'Administration', p_text) $$;

CREATE FUNCTION nebra.admin_revoke_from_role(p_workstation text, p_role text, p_area text,
                                             p_operation text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.role_rights
        WHERE role_id = nebra.role_id(p_role) AND area = p_area AND operation = p_operation;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Right revoked from role %s: %s/%s', p_role, p_area, p_operation));
END
$$;

CREATE FUNCTION nebra.admin_unassign_role(p_workstation text, p_user text, p_role text)
    RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    DELETE FROM nebra.user_roles WHERE user_id = nebra.user_id(p_user) AND role_id = nebra.role_id(p_role);
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Role %s taken from %s', p_role, p_user));
END
$$;

CREATE FUNCTION nebra.admin_reseal_head(p_workstation text) RETURNS bigint
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
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              'Audit chain head sealed afresh by the administrator');
END
$$;

-- The session rules of the site's policy file, as "nebra-secadmin create"
-- brings them to the server. Recorded when they change; 0 when they were so.
CREATE FUNCTION nebra.admin_set_session_policy(p_workstation text, p_idle_minutes integer,
                                               p_password_minimum_length integer) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    IF EXISTS (SELECT 1 FROM nebra.policy WHERE id = 1 AND idle_minutes = p_idle_minutes
               AND password_minimum_length = p_password_minimum_length) THEN
        RETURN 0;
    END IF;
    UPDATE nebra.policy SET idle_minutes = p_idle_minutes, password_minimum_length = p_password_minimum_length
        WHERE id = 1;
    RETURN nebra.append_audit(session_user, p_workstation, 'Administration',
                              format('Policy set: sessions end after %s idle minutes, passwords of at least %s '
                                     'characters', p_idle_minutes, p_password_minimum_length));
END
$$;

-- Every call the client role may make waits at most this long for a lock,
-- whatever the caller set for its own session.
ALTER FUNCTION nebra.log_in(text, text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.is_allowed(text, text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.record_audit(text, text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.check_password(text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.change_password(text, text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.log_out(text, text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.touch_session(text) SET lock_timeout = '5s';
ALTER FUNCTION nebra.review_audit_count(text, text, text, text, text, text, bigint) SET lock_timeout = '5s';
ALTER FUNCTION nebra.review_audit_page(text, text, text, text, text, text, bigint, text, boolean, bigint, integer)
    SET lock_timeout = '5s';
ALTER FUNCTION nebra.review_verify_audit(text) SET lock_timeout = '5s';

REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.log_in(text, text, text), nebra.is_allowed(text, text, text),
    nebra.record_audit(text, text, text), nebra.check_password(text, text),
    nebra.change_password(text, text, text), nebra.log_out(text, text), nebra.touch_session(text),
    nebra.review_audit_count(text, text, text, text, text, text, bigint),
    nebra.review_audit_page(text, text, text, text, text, text, bigint, text, boolean, bigint, integer),
    nebra.review_verify_audit(text) TO nebra_client;

GRANT USAGE ON SCHEMA nebra TO nebra_admin;
GRANT EXECUTE ON FUNCTION nebra.admin_add_user(text, text, text, text),
    nebra.admin_set_disabled(text, text, boolean), nebra.admin_set_password(text, text, text, boolean),
    nebra.admin_unlock(text, text), nebra.admin_grant(text, text, text, text),
    nebra.admin_revoke(text, text, text, text), nebra.admin_add_role(text, text),
    nebra.admin_grant_to_role(text, text, text, text), nebra.admin_revoke_from_role(text, text, text, text),
    nebra.admin_assign_role(text, text, text), nebra.admin_unassign_role(text, text, text),
    nebra.admin_set_policy(text, integer, integer), nebra.admin_set_session_policy(text, integer, integer),
    nebra.admin_import_entry(text, text, text, text, text),
    nebra.admin_import_user(text, text, text, boolean, boolean, integer), nebra.admin_note(text, text),
    nebra.admin_reseal_head(text), nebra.admin_list_users(), nebra.admin_audit_entries(bigint, integer),
    nebra.verify_audit() TO nebra_admin;
