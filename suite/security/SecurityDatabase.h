#pragma once

#include <QByteArray>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <functional>
#include <memory>

namespace nebra {

// One connection to a security database: an SQLite file (through Qt Sql)
// marked with the suite's application id, in WAL journal mode with
// synchronous FULL, so that a committed transaction is on the disk before
// the call that committed it returns. The tables:
//
//   meta(key, value)                    schema version, database id, key check
//   users(...)                          one row per user, with password hash and lockout state
//   roles(id, name, mac)                named sets of rights
//   user_rights / role_rights           rights (area, operation), "*" matching any
//   user_roles(user_id, role_id)
//   store_state(changes, row_changes, rows_digest, entries, newest_mac, seal)
//
// Users, roles, rights and role memberships carry a MAC made with the site
// key (see RowSeals), so that a row edited, slipped in or written back behind
// the suite's back is noticed; store_state holds the database's sealed
// record of its own changes (StoreState). The file and its companions are created 0600, or 0660 in a
// folder shared by the site group (SecureFiles); a database that every user
// could read or write is refused.
//   audit_trail(seq, utc, user_name, workstation, area, text, mac)
//   document_records(...)               the newest fingerprint per document (DocumentTable)
//   document_signatures(...)            electronic signatures (SignatureTable)
//
// The audit and signature tables refuse UPDATE and DELETE through triggers, and is
// indexed by time, user and area for the reviewer's views.
//
// WAL needs every connection to run on the one machine that holds the file
// (it shares memory between them); see docs/configuration.md.
class SecurityDatabase
{
public:
    static constexpr int ApplicationId = 0x4E425345; // "NBSE"
    static constexpr int SchemaVersion = 3;
    // The oldest schema that SecurityStore brings up to date on opening.
    static constexpr int UpgradableVersion = 2;

    ~SecurityDatabase();
    SecurityDatabase(const SecurityDatabase&) = delete;
    SecurityDatabase& operator=(const SecurityDatabase&) = delete;

    // Opens an existing security database for reading and writing. Null, with
    // *error set to a sentence for the user, when the file is missing,
    // read-only, truncated, not SQLite, damaged or not a security database.
    // A file left short by a checkpoint that a full disk cut off is made
    // whole from its write-ahead journal first.
    static std::unique_ptr<SecurityDatabase> open(const QString& path, QString* error);

    // Makes a new, empty security database. Refuses when the file exists; a
    // failure leaves no file behind.
    static std::unique_ptr<SecurityDatabase> create(const QString& path, QString* error);

    QString path() const { return m_path; }
    // SchemaVersion, or UpgradableVersion until the store has upgraded it.
    int schemaVersion() const { return m_schemaVersion; }
    // Inside the caller's transaction: runs the statements and records the current schema version.
    bool upgradeSchema(const QStringList& statements, QString* error);
    // Random identity given at creation; binds the audit chain to this file.
    QByteArray databaseId() const { return m_databaseId; }

    QString metaValue(const QString& key) const;
    bool setMetaValue(const QString& key, const QString& value, QString* error);

    // Prepares and runs one statement with positional values ("?").
    bool exec(QSqlQuery& query, const QString& sql, const QVariantList& values, QString* error) const;
    QSqlQuery newQuery() const;

    // Runs work between BEGIN IMMEDIATE and COMMIT. The write lock is taken
    // first, so writers on the same file wait for each other (up to the busy
    // time-out) instead of failing half-way. Rolls back when work returns
    // false or the commit fails. Called inside another transaction, work
    // simply becomes part of it (and a failure fails the outer one).
    bool writeTransaction(const std::function<bool(QString*)>& work, QString* error);
    // Runs work inside one read transaction: everything it reads is one snapshot.
    bool readTransaction(const std::function<bool(QString*)>& work, QString* error) const;

private:
    explicit SecurityDatabase(QString path);

    bool connect(QString* error);
    bool isOpen() const;
    bool completeFromJournal(QString* error);
    bool applyPragmas(QString* error);
    bool createSchema(QString* error);
    bool checkIdentity(QString* error);
    bool checkReadableAndWritable(QString* error);
    bool addReviewIndexes(QString* error);
    QString describe(const QString& what) const;

    QString m_path;
    QString m_connectionName;
    QByteArray m_databaseId;
    mutable int m_transactionDepth = 0;
    int m_schemaVersion = 0;
};

} // namespace nebra
