-- Users, roles, rights, sessions and the store's own settings. Every table
-- belongs to the owner role; nobody else is granted anything on them: the
-- client role reaches them only through the functions granted to it.

CREATE FUNCTION nebra.name_key(p_name text) RETURNS text
    LANGUAGE sql IMMUTABLE STRICT
    SET search_path = pg_catalog, pg_temp
    AS $$ SELECT lower(normalize(p_name, NFC)) $$;

-- The key of the audit chain's MACs and of unknown user labels. Only the
-- owner can read it; it never leaves the server.
CREATE TABLE nebra.site_key (
    id integer PRIMARY KEY CHECK (id = 1),
    mac_key bytea NOT NULL CHECK (octet_length(mac_key) >= 32)
);
INSERT INTO nebra.site_key VALUES (1, nebra_crypto.gen_random_bytes(32));

CREATE TABLE nebra.policy (
    id integer PRIMARY KEY CHECK (id = 1),
    lockout_threshold integer NOT NULL DEFAULT 5 CHECK (lockout_threshold BETWEEN 1 AND 100),
    hash_cost integer NOT NULL DEFAULT 12 CHECK (hash_cost BETWEEN 4 AND 31)
);
INSERT INTO nebra.policy(id) VALUES (1);

CREATE TABLE nebra.users (
    id bigserial PRIMARY KEY,
    name text NOT NULL,
    name_key text NOT NULL UNIQUE,
    full_name text NOT NULL DEFAULT '',
    password_hash text NOT NULL DEFAULT '',
    disabled boolean NOT NULL DEFAULT false,
    failed_logins integer NOT NULL DEFAULT 0,
    locked boolean NOT NULL DEFAULT false,
    must_change_password boolean NOT NULL DEFAULT false
);

CREATE TABLE nebra.roles (
    id bigserial PRIMARY KEY,
    name text NOT NULL,
    name_key text NOT NULL UNIQUE
);

CREATE TABLE nebra.user_rights (
    user_id bigint NOT NULL REFERENCES nebra.users(id) ON DELETE CASCADE,
    area text NOT NULL,
    operation text NOT NULL,
    PRIMARY KEY (user_id, area, operation)
);

CREATE TABLE nebra.role_rights (
    role_id bigint NOT NULL REFERENCES nebra.roles(id) ON DELETE CASCADE,
    area text NOT NULL,
    operation text NOT NULL,
    PRIMARY KEY (role_id, area, operation)
);

CREATE TABLE nebra.user_roles (
    user_id bigint NOT NULL REFERENCES nebra.users(id) ON DELETE CASCADE,
    role_id bigint NOT NULL REFERENCES nebra.roles(id) ON DELETE CASCADE,
    PRIMARY KEY (user_id, role_id)
);

-- Only a hash of each session token is kept: a copy of this table opens no session.
CREATE TABLE nebra.sessions (
    token_hash bytea PRIMARY KEY,
    user_id bigint NOT NULL REFERENCES nebra.users(id) ON DELETE CASCADE,
    workstation text NOT NULL,
    started_utc timestamptz NOT NULL DEFAULT clock_timestamp(),
    ended_utc timestamptz
);

REVOKE ALL ON ALL TABLES IN SCHEMA nebra FROM PUBLIC;
REVOKE ALL ON ALL SEQUENCES IN SCHEMA nebra FROM PUBLIC;
