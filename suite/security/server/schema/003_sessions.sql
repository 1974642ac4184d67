-- What a workstation may do: log in, check a right, record an audit entry,
-- change its password and log out, each for the session token that log-in
-- handed out. These run as the owner (SECURITY DEFINER) with a fixed search
-- path; they are the only things the client role is granted.

-- "unknown user #" and a short keyed hash of the name typed: what was typed
-- may be a password typed into the wrong field, so it is never stored.
CREATE FUNCTION nebra.unknown_user_label(p_name text) RETURNS text
    LANGUAGE sql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT 'unknown user #' || left(encode(nebra_crypto.hmac(convert_to(nebra.name_key(p_name), 'UTF8'),
                                                          mac_key, 'sha256'), 'hex'), 12)
FROM nebra.site_key WHERE id = 1
$$;

-- Counts a wrong password; locks the account at the threshold. True when it locked now.
CREATE FUNCTION nebra.count_failure(p_user nebra.users, p_workstation text, p_what text) RETURNS boolean
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_threshold integer := (SELECT lockout_threshold FROM nebra.policy WHERE id = 1);
    v_locks boolean := p_user.failed_logins + 1 >= v_threshold;
BEGIN
    UPDATE nebra.users SET failed_logins = failed_logins + 1, locked = locked OR v_locks
        WHERE id = p_user.id;
    PERFORM nebra.append_audit(p_user.name, p_workstation, 'Security', p_what);
    IF v_locks THEN
        PERFORM nebra.append_audit(p_user.name, p_workstation, 'Security',
                                   format('Account locked after %s failed log ins', v_threshold));
    END IF;
    RETURN v_locks;
END
$$;

-- The account is read under a row lock, so parallel guesses are counted one
-- after the other and none slips past the lock. A locked or disabled account
-- is refused without its password being checked; an unknown name costs the
-- same hashing work as a known one.
CREATE FUNCTION nebra.log_in(p_name text, p_password text, p_workstation text,
                             OUT status text, OUT token text, OUT user_name text, OUT full_name text,
                             OUT must_change_password boolean)
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_user nebra.users;
    v_token bytea;
BEGIN
    status := 'refused'; must_change_password := false;
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

-- The open session of a token, or nothing.
CREATE FUNCTION nebra.session_of(p_token text) RETURNS nebra.sessions
    LANGUAGE sql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT * FROM nebra.sessions
WHERE token_hash = nebra_crypto.digest(decode(p_token, 'hex'), 'sha256') AND ended_utc IS NULL
$$;

-- False for an unknown or ended session and for a disabled or locked account.
-- "*" as the area or operation of a right stands for any.
CREATE FUNCTION nebra.is_allowed(p_token text, p_area text, p_operation text) RETURNS boolean
    LANGUAGE sql STABLE SECURITY DEFINER
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

-- Records an entry under the session's user and workstation; raises for no open session.
CREATE FUNCTION nebra.record_audit(p_token text, p_area text, p_text text) RETURNS bigint
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_session nebra.sessions := nebra.session_of(p_token);
BEGIN
    IF v_session.user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    RETURN nebra.append_audit((SELECT name FROM nebra.users WHERE id = v_session.user_id),
                              v_session.workstation, p_area, p_text);
END
$$;

-- 'changed', 'incorrect' (the current password is wrong; counted like a
-- failed log-in), 'locked' (that failure locked the account and ended the
-- session) or 'same' (the new password is the current one).
CREATE FUNCTION nebra.change_password(p_token text, p_current text, p_new text) RETURNS text
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
    UPDATE nebra.users
        SET password_hash = nebra_crypto.crypt(p_new, nebra_crypto.gen_salt('bf', (SELECT hash_cost FROM nebra.policy))),
            failed_logins = 0, must_change_password = false
        WHERE id = v_user.id;
    PERFORM nebra.append_audit(v_user.name, v_session.workstation, 'Security', 'Password changed');
    RETURN 'changed';
END
$$;

-- Ends the session and records why; false when it was not open.
CREATE FUNCTION nebra.log_out(p_token text, p_text text) RETURNS boolean
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
DECLARE
    v_session nebra.sessions := nebra.session_of(p_token);
BEGIN
    IF v_session.user_id IS NULL THEN
        RETURN false;
    END IF;
    UPDATE nebra.sessions SET ended_utc = clock_timestamp() WHERE token_hash = v_session.token_hash;
    PERFORM nebra.append_audit((SELECT name FROM nebra.users WHERE id = v_session.user_id),
                               v_session.workstation, 'Security', p_text);
    RETURN true;
END
$$;

REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
GRANT USAGE ON SCHEMA nebra TO nebra_client;
GRANT EXECUTE ON FUNCTION nebra.log_in(text, text, text), nebra.is_allowed(text, text, text),
    nebra.record_audit(text, text, text), nebra.change_password(text, text, text),
    nebra.log_out(text, text) TO nebra_client;
