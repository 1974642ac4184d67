-- The current password checked on its own, before a new one is chosen: a
-- wrong one counts like a failed log-in, and the failure that reaches the
-- threshold locks the account and ends the session.

CREATE FUNCTION nebra.check_password(p_token text, p_current text) RETURNS text
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
    IF NOT v_user.locked AND NOT v_user.disabled
       AND nebra_crypto.crypt(coalesce(p_current, ''), v_user.password_hash) = v_user.password_hash THEN
        RETURN 'ok';
    END IF;
    IF nebra.count_failure(v_user, v_session.workstation, 'Password change refused: current password incorrect') THEN
        UPDATE nebra.sessions SET ended_utc = clock_timestamp() WHERE token_hash = v_session.token_hash;
        PERFORM nebra.append_audit(v_user.name, v_session.workstation, 'Security',
                                   'Session ended: the account was locked');
        RETURN 'locked';
    END IF;
    RETURN 'incorrect';
END
$$;

REVOKE ALL ON FUNCTION nebra.check_password(text, text) FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.check_password(text, text) TO nebra_client;
