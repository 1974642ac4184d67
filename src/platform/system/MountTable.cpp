#include "MountTable.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace nebra {

namespace {

// Mount points and sources are written with blanks, tabs, new lines and
// backslashes as three octal digits after a backslash ("\040").
QByteArray unescaped(const QByteArray& field)
{
    QByteArray text;
    text.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const char c = field[i];
        if (c == '\\' && i + 3 < field.size() && field[i + 1] >= '0' && field[i + 1] <= '3') {
            bool ok = false;
            const int value = field.mid(i + 1, 3).toInt(&ok, 8);
            if (ok) {
                text += char(value);
                i += 3;
                continue;
            }
        }
        text += c;
    }
    return text;
}

bool isAtOrBelow(const QByteArray& path, const QByteArray& point)
{
    if (point == "/")
        return path.startsWith('/');
    return path.startsWith(point) && (path.size() == point.size() || path[point.size()] == '/');
}

} // namespace

MountTable::MountTable() : m_fd(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) {}

MountTable::~MountTable()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool MountTable::parseLine(const QByteArray& line, Mount& mount)
{
    const QList<QByteArray> fields = line.split(' ');
    const qsizetype separator = fields.indexOf(QByteArray("-"));
    if (fields.size() < 5 || separator < 6 || separator + 2 >= fields.size())
        return false;
    mount.point = unescaped(fields[4]);
    mount.type = fields[separator + 1];
    mount.source = unescaped(fields[separator + 2]);
    return mount.point.startsWith('/');
}

void MountTable::read()
{
    m_mounts.clear();
    m_read = true;
    if (m_fd < 0 || ::lseek(m_fd, 0, SEEK_SET) < 0)
        return;
    QByteArray text;
    char buffer[16384];
    for (;;) {
        const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
        if (got <= 0)
            break;
        text.append(buffer, got);
    }
    for (const QByteArray& line : text.split('\n')) {
        Mount mount;
        if (parseLine(line, mount))
            m_mounts.push_back(std::move(mount));
    }
}

void MountTable::refreshIfChanged()
{
    if (!m_read) {
        read();
        return;
    }
    pollfd watch{m_fd, POLLPRI, 0};
    if (m_fd >= 0 && ::poll(&watch, 1, 0) > 0 && (watch.revents & (POLLPRI | POLLERR)))
        read();
}

const std::vector<MountTable::Mount>& MountTable::mounts()
{
    refreshIfChanged();
    return m_mounts;
}

MountTable::Mount MountTable::mountOf(const QByteArray& path)
{
    refreshIfChanged();
    const QByteArray absolute =
        path.startsWith('/') ? path
                             : QFile::encodeName(QDir::current().absoluteFilePath(QFile::decodeName(path)));
    const Mount* best = nullptr;
    for (const Mount& mount : m_mounts) {
        // Of mounts stacked on one point the last is the one seen.
        if (isAtOrBelow(absolute, mount.point) && (!best || mount.point.size() >= best->point.size()))
            best = &mount;
    }
    return best ? *best : Mount{"/", {}, {}};
}

} // namespace nebra
