#include "SystemFileCheck.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

namespace nebra {

namespace {

QString userName(uid_t uid)
{
    const passwd* entry = ::getpwuid(uid);
    return entry ? QString::fromLocal8Bit(entry->pw_name) : QString::number(uid);
}

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

// Empty when path (links followed) is owner's and shut to writes by group and others.
QString fixFor(const QString& path, uid_t owner)
{
    struct stat st = {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return {};
    QStringList commands;
    if (st.st_uid != owner)
        commands << QStringLiteral("chown %1 \"%2\"").arg(userName(owner), shown(path));
    if ((st.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        commands << QStringLiteral("chmod go-w \"%1\"").arg(shown(path));
    return commands.join(QLatin1String(" && "));
}

} // namespace

QString SystemFileCheck::distrust(const QString& path, uid_t owner)
{
    // The folder the file really lies in: whoever may write there may replace it.
    const QFileInfo info(path);
    const QString real =
        info.canonicalFilePath().isEmpty() ? info.absoluteFilePath() : info.canonicalFilePath();
    QStringList fixes;
    for (const QString& part : {real, QFileInfo(real).absolutePath()})
        if (const QString fix = fixFor(part, owner); !fix.isEmpty())
            fixes << fix;
    if (fixes.isEmpty())
        return {};
    return QStringLiteral(
               "The system-wide settings file \"%1\" can be changed or replaced by users other than "
               "%2, so the security policy it sets cannot be trusted. Ask your administrator to run "
               "\"%3\".")
        .arg(shown(path), userName(owner), fixes.join(QLatin1String(" && ")));
}

QString SystemFileCheck::unreadable(const QString& path)
{
    struct stat st = {};
    const group* entry =
        ::stat(QFile::encodeName(path).constData(), &st) == 0 ? ::getgrgid(st.st_gid) : nullptr;
    const QString text =
        QStringLiteral(
            "The system-wide settings file \"%1\" cannot be read, so the security policy it sets is "
            "unknown. ")
            .arg(shown(path));
    if (entry && st.st_gid != 0)
        return text +
               QStringLiteral("Ask your administrator to add you to the group \"%1\", which may read it "
                              "(the file stays root:%1, mode 0640, so that no one else reads the "
                              "server's password).")
                   .arg(QString::fromLocal8Bit(entry->gr_name));
    return text +
           QStringLiteral("Ask your administrator to give it to the site group, readable by that group "
                          "only (\"chgrp GROUP \"%1\" && chmod 0640 \"%1\"\"), and to add you to that "
                          "group.")
               .arg(shown(path));
}

bool SystemFileCheck::sameFile(const QString& a, const QString& b)
{
    struct stat sa = {};
    struct stat sb = {};
    if (::stat(QFile::encodeName(a).constData(), &sa) == 0 &&
        ::stat(QFile::encodeName(b).constData(), &sb) == 0)
        return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
    return QDir::cleanPath(QFileInfo(a).absoluteFilePath()) ==
           QDir::cleanPath(QFileInfo(b).absoluteFilePath());
}

} // namespace nebra
