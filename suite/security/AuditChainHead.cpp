#include "AuditChainHead.h"

#include "SecureFiles.h"
#include "SiteKey.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QThread>
#include <QtEndian>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nebra {

namespace {
const QByteArray Magic = QByteArrayLiteral("nebra-audit-head 2");
const QByteArray FirstMagic = QByteArrayLiteral("nebra-audit-head 1");
// Every record is padded with line feeds to this size, so that a record
// written over another never leaves bytes of the older one behind and the
// file keeps its size (its fdatasync then writes no metadata).
constexpr qsizetype RecordSize = 256;

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

// An exclusive lock on "<head>.lock", shared by every process that writes
// the head. The kernel drops it when its holder ends, however it ends, so a
// killed writer never leaves it stale. The file itself stays in place. It
// is opened for reading only: flock() needs no more, so any member of the
// site group can take the lock, whoever made the file and whatever the
// umask was then.
class HeadLock
{
public:
    explicit HeadLock(const QString& headPath)
    {
        const QString path = headPath + QStringLiteral(".lock");
        const QByteArray name = QFile::encodeName(path);
        m_fd = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
        if (m_fd < 0) {
            const mode_t mode = SecureFiles::dataMode(path);
            m_fd = ::open(name.constData(), O_RDONLY | O_CREAT | O_CLOEXEC, mode);
            if (m_fd >= 0)
                ::fchmod(m_fd, mode); // the umask must not keep the site group out
        }
        if (m_fd < 0)
            return;
        const QDeadlineTimer deadline(10000);
        while (!m_locked && !deadline.hasExpired()) {
            m_locked = ::flock(m_fd, LOCK_EX | LOCK_NB) == 0;
            if (!m_locked)
                QThread::msleep(2);
        }
    }
    ~HeadLock()
    {
        if (m_fd >= 0)
            ::close(m_fd); // releases the lock
    }
    HeadLock(const HeadLock&) = delete;
    HeadLock& operator=(const HeadLock&) = delete;

    bool isLocked() const { return m_locked; }

private:
    int m_fd = -1;
    bool m_locked = false;
};
} // namespace

AuditChainHead::AuditChainHead(QString path, const SiteKey& key, QByteArray databaseId)
    : m_path(std::move(path)), m_key(key), m_databaseId(std::move(databaseId))
{
}

QByteArray AuditChainHead::sealedMessage(const Record& record) const
{
    const bool first = record.changes < 0;
    QByteArray message =
        (first ? QByteArrayLiteral("nebra-audit-head-v1") : QByteArrayLiteral("nebra-audit-head-v2")) +
        m_databaseId;
    char number[8];
    qToBigEndian<qint64>(record.count, number);
    message.append(number, sizeof number);
    message.append(record.mac);
    if (!first) {
        qToBigEndian<qint64>(record.changes, number);
        message.append(number, sizeof number);
    }
    return message;
}

AuditChainHead::ReadStatus AuditChainHead::read(Record* record, QString* error) const
{
    QFile file(m_path);
    if (!file.exists()) {
        *error = QStringLiteral("The audit chain head file \"%1\" is missing.").arg(shown(m_path));
        return ReadStatus::Missing;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("The audit chain head file \"%1\" cannot be read (%2).")
                     .arg(shown(m_path), file.errorString());
        return ReadStatus::Invalid;
    }
    const QList<QByteArray> lines = file.read(1024).trimmed().split('\n');
    Record r;
    QByteArray sealed;
    bool countOk = false;
    bool changesOk = true;
    const bool first = lines.size() == 4 && lines[0].trimmed() == FirstMagic;
    if (first || (lines.size() == 5 && lines[0].trimmed() == Magic)) {
        changesOk = first;
        for (const QByteArray& line : lines.mid(1)) {
            const QByteArray value = line.mid(line.indexOf('=') + 1).trimmed();
            if (line.startsWith("count="))
                r.count = value.toLongLong(&countOk);
            else if (line.startsWith("mac="))
                r.mac = QByteArray::fromHex(value);
            else if (line.startsWith("changes="))
                r.changes = value.toLongLong(&changesOk);
            else if (line.startsWith("seal="))
                sealed = QByteArray::fromHex(value);
        }
    }
    if (!countOk || !changesOk || r.count < 0 || (!first && r.changes < 0) ||
        !m_key.verify(sealed, sealedMessage(r))) {
        *error =
            QStringLiteral("The audit chain head file \"%1\" has been altered or does not belong to this "
                           "database.")
                .arg(shown(m_path));
        return ReadStatus::Invalid;
    }
    *record = r;
    return ReadStatus::Ok;
}

QByteArray AuditChainHead::recordText(const Record& record) const
{
    QByteArray text = Magic + '\n';
    text += "count=" + QByteArray::number(record.count) + '\n';
    text += "mac=" + record.mac.toHex() + '\n';
    text += "changes=" + QByteArray::number(record.changes) + '\n';
    text += "seal=" + m_key.mac(sealedMessage(record)).toHex() + '\n';
    text.append(RecordSize - text.size(), '\n');
    return text;
}

QString AuditChainHead::cannotWrite(const QString& reason) const
{
    return QStringLiteral("The audit chain head file \"%1\" cannot be written (%2).")
        .arg(shown(m_path), reason);
}

bool AuditChainHead::write(const Record& record, QString* error)
{
    const QByteArray text = recordText(record);
    QSaveFile file(m_path);
    const QFileDevice::Permissions mode = SecureFiles::dataMode(m_path) == 0660
                                              ? QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                    QFileDevice::ReadGroup | QFileDevice::WriteGroup
                                              : QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    if (file.open(QIODevice::WriteOnly) && file.setPermissions(mode) && file.write(text) == text.size() &&
        file.commit())
        return true;
    *error = cannotWrite(file.errorString());
    return false;
}

// Written in place: one pwrite at the start of the file and one fdatasync,
// where a replacement would cost a new file, its sync, a rename and the
// folder's metadata. A process killed here leaves the old record or the new
// one (the kernel copies the few bytes in one go). A power cut in the middle
// of the sector, on a disk that does not write sectors whole, could leave a
// mix: its seal then fails, the head reads as altered, nothing more is
// appended, and "nebra-secadmin reseal-head" rebuilds it from the database
// once the chain has been verified.
bool AuditChainHead::overwrite(const Record& record, QString* error)
{
    const QByteArray text = recordText(record);
    const int fd = ::open(QFile::encodeName(m_path).constData(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        *error = cannotWrite(QString::fromLocal8Bit(strerror(errno)));
        return false;
    }
    struct stat st = {};
    bool ok = ::pwrite(fd, text.constData(), size_t(text.size()), 0) == text.size() && ::fstat(fd, &st) == 0;
    // A record of an older, shorter format grew the file once; a longer one is cut to size.
    if (ok && st.st_size > text.size())
        ok = ::ftruncate(fd, text.size()) == 0;
    ok = ok && ::fdatasync(fd) == 0;
    const int failure = errno;
    ::close(fd);
    if (!ok)
        *error = cannotWrite(QString::fromLocal8Bit(strerror(failure)));
    return ok;
}

bool AuditChainHead::advance(const Record& record, QString* error)
{
    const HeadLock lock(m_path);
    if (!lock.isLocked()) {
        *error = QStringLiteral("The audit chain head file \"%1\" is locked by another program.")
                     .arg(shown(m_path));
        return false;
    }
    // A head that is missing or altered is never replaced here: writing a
    // fresh one would hide newest entries that were cut off.
    Record current;
    if (read(&current, error) != ReadStatus::Ok)
        return false;
    if (current.changes >= record.changes && current.count >= record.count)
        return true; // another writer got further already
    return overwrite(record, error);
}

bool AuditChainHead::reset(const Record& record, QString* error)
{
    const HeadLock lock(m_path);
    if (!lock.isLocked()) {
        *error = QStringLiteral("The audit chain head file \"%1\" is locked by another program.")
                     .arg(shown(m_path));
        return false;
    }
    return write(record, error);
}

} // namespace nebra
