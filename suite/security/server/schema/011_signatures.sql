-- Electronic signatures of documents. Only the owner reaches the table: a
-- workstation signs only through sign_document, which checks the password
-- here, as log_in does, and records the audit entry and the row in the
-- caller's one transaction; it reads them through document_signatures, which
-- tells for each row whether it still says what its entry says. Rows, like
-- entries, are never changed or removed.

CREATE TABLE nebra.document_signatures (
    seq bigint PRIMARY KEY, -- the entry that records it
    path text NOT NULL,
    sha256 bytea NOT NULL CHECK (octet_length(sha256) = 32),
    meaning text NOT NULL,
    user_name text NOT NULL,
    full_name text NOT NULL,
    signed_utc text NOT NULL
);
CREATE INDEX document_signatures_path ON nebra.document_signatures (path);

CREATE FUNCTION nebra.refuse_signature_change() RETURNS trigger
    LANGUAGE plpgsql
    SET search_path = pg_catalog, pg_temp
    AS $$
BEGIN
    RAISE EXCEPTION 'signatures cannot be changed or removed' USING ERRCODE = 'insufficient_privilege';
END
$$;
CREATE TRIGGER document_signatures_kept BEFORE UPDATE OR DELETE ON nebra.document_signatures
    FOR EACH ROW EXECUTE FUNCTION nebra.refuse_signature_change();
CREATE TRIGGER document_signatures_not_truncated BEFORE TRUNCATE ON nebra.document_signatures
    FOR EACH STATEMENT EXECUTE FUNCTION nebra.refuse_signature_change();

-- The entry's text, as the workstation's embedded store words it too.
CREATE FUNCTION nebra.signature_text(p_path text, p_sha256 bytea, p_meaning text, p_full_name text,
                                     p_user text) RETURNS text
    LANGUAGE sql IMMUTABLE
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT format('Signed: %s sha256=%s meaning=%s by %s (%s)', p_path, encode(p_sha256, 'hex'),
                        p_meaning, p_full_name, p_user) $$;

-- Signs for the session's user, who needs the right (Documents, Sign) and a
-- full name. The password is checked under the account's row lock: a wrong
-- one counts like a failed log-in, and the failure that reaches the
-- threshold locks the account and ends the session. Which meanings the site
-- allows is the workstation's policy; the server takes any it is given.
-- status: 'signed' (seq, user_name, full_name and signed_utc set), 'no full name',
-- 'incorrect' or 'locked'.
CREATE FUNCTION nebra.sign_document(p_token text, p_password text, p_path text, p_sha256 bytea,
                                    p_meaning text, OUT status text, OUT seq bigint, OUT user_name text,
                                    OUT full_name text, OUT signed_utc text)
    LANGUAGE plpgsql SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET lock_timeout = '5s'
    AS $$
#variable_conflict use_column
DECLARE
    v_session nebra.sessions := nebra.session_of(p_token);
    v_user nebra.users;
BEGIN
    IF v_session.user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    IF NOT nebra.is_allowed(p_token, 'Documents', 'Sign') THEN
        RAISE EXCEPTION 'You do not have the right to sign documents.' USING ERRCODE = 'insufficient_privilege';
    END IF;
    IF coalesce(p_path, '') = '' OR coalesce(octet_length(p_sha256), 0) <> 32 OR coalesce(p_meaning, '') = '' THEN
        RAISE EXCEPTION 'a signature needs a path, its SHA-256 and a meaning'
            USING ERRCODE = 'invalid_parameter_value';
    END IF;
    SELECT * INTO STRICT v_user FROM nebra.users WHERE id = v_session.user_id FOR UPDATE;
    IF btrim(v_user.full_name) = '' THEN
        status := 'no full name';
        RETURN;
    END IF;
    IF v_user.locked OR v_user.disabled
       OR nebra_crypto.crypt(coalesce(p_password, ''), v_user.password_hash) <> v_user.password_hash THEN
        status := 'incorrect';
        IF nebra.count_failure(v_user, v_session.workstation, 'Signing refused: password incorrect') THEN
            UPDATE nebra.sessions SET ended_utc = clock_timestamp() WHERE token_hash = v_session.token_hash;
            PERFORM nebra.append_audit(v_user.name, v_session.workstation, 'Security',
                                       'Session ended: the account was locked');
            status := 'locked';
        END IF;
        RETURN;
    END IF;
    user_name := v_user.name;
    full_name := btrim(v_user.full_name);
    seq := nebra.append_audit(v_user.name, v_session.workstation, 'Signatures',
                              nebra.signature_text(p_path, p_sha256, p_meaning, full_name, v_user.name));
    signed_utc := (SELECT a.utc FROM nebra.audit_trail a WHERE a.seq = sign_document.seq);
    INSERT INTO nebra.document_signatures VALUES (seq, p_path, p_sha256, p_meaning, v_user.name, full_name,
                                                  signed_utc);
    status := 'signed';
END
$$;

-- The signatures of a path (of every path when it is NULL), oldest first;
-- intact when the row says what its entry says, by the same user.
CREATE FUNCTION nebra.signatures_of(p_path text)
    RETURNS TABLE (seq bigint, path text, sha256 bytea, meaning text, user_name text, full_name text,
                   signed_utc text, intact boolean)
    LANGUAGE sql STABLE
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT s.seq, s.path, s.sha256, s.meaning, s.user_name, s.full_name, s.signed_utc,
       coalesce(a.area = 'Signatures' AND a.user_name = s.user_name
                AND a.text = nebra.signature_text(s.path, s.sha256, s.meaning, s.full_name, s.user_name), false)
FROM nebra.document_signatures s LEFT JOIN nebra.audit_trail a ON a.seq = s.seq
WHERE p_path IS NULL OR s.path = p_path
ORDER BY s.seq
$$;

-- The same for a workstation with an open session.
CREATE FUNCTION nebra.document_signatures(p_token text, p_path text)
    RETURNS TABLE (seq bigint, path text, sha256 bytea, meaning text, user_name text, full_name text,
                   signed_utc text, intact boolean)
    LANGUAGE plpgsql VOLATILE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET lock_timeout = '5s'
    AS $$
BEGIN
    IF (nebra.session_of(p_token)).user_id IS NULL THEN
        RAISE EXCEPTION 'there is no open session for this token' USING ERRCODE = '28000';
    END IF;
    RETURN QUERY SELECT * FROM nebra.signatures_of(p_path);
END
$$;

-- The same for the administrator's tool.
CREATE FUNCTION nebra.admin_document_signatures(p_path text)
    RETURNS TABLE (seq bigint, path text, sha256 bytea, meaning text, user_name text, full_name text,
                   signed_utc text, intact boolean)
    LANGUAGE sql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT * FROM nebra.signatures_of(p_path) $$;

-- The signature entries of the trail that have no row (for verify).
CREATE FUNCTION nebra.admin_unrecorded_signatures() RETURNS SETOF bigint
    LANGUAGE sql STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    AS $$
SELECT a.seq FROM nebra.audit_trail a
WHERE a.area = 'Signatures' AND NOT EXISTS (SELECT 1 FROM nebra.document_signatures s WHERE s.seq = a.seq)
ORDER BY a.seq
$$;

REVOKE ALL ON nebra.document_signatures FROM PUBLIC;
REVOKE ALL ON ALL FUNCTIONS IN SCHEMA nebra FROM PUBLIC;
GRANT EXECUTE ON FUNCTION nebra.sign_document(text, text, text, bytea, text),
    nebra.document_signatures(text, text) TO nebra_client;
GRANT EXECUTE ON FUNCTION nebra.admin_document_signatures(text), nebra.admin_unrecorded_signatures()
    TO nebra_admin;
