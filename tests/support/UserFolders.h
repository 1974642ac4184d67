#pragma once

#include "SettingsStore.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <unistd.h>

namespace nebra::test {

// Points HOME and the XDG folders of this process into a fresh temporary
// folder, so that settings, logs, data and the single-instance socket of a
// test never touch the user's own. Restores nothing: use one per test
// function (or one per test case) and let it go out of scope at the end.
class UserFolders
{
public:
    UserFolders()
    {
        // The administrator's file in /etc/xdg wins over XDG_CONFIG_DIRS, so on a
        // machine that has one the tests would read, and rewrite, the site's policy.
        if (QFileInfo::exists(QStringLiteral("/etc/xdg/Nebra/Suite.ini")))
            qFatal("/etc/xdg/Nebra/Suite.ini exists: the tests would use this machine's security policy. "
                   "Run them where no site policy is installed.");
        const QString root = m_dir.path();
        for (const char* name : {"home", "config", "state", "data", "runtime", "sysconfig"})
            QDir(root).mkdir(QLatin1String(name));
        QFile::setPermissions(root + QStringLiteral("/runtime"),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("HOME", (root + QStringLiteral("/home")).toUtf8());
        qputenv("XDG_CONFIG_HOME", (root + QStringLiteral("/config")).toUtf8());
        // The administrator's system-wide settings too: a test never reads or writes /etc/xdg.
        // The programs take it from nowhere but /etc/xdg; the test's own process, and the test
        // builds of the programs it starts (adoptTestPolicyFile), are pointed here instead.
        qputenv("XDG_CONFIG_DIRS", (root + QStringLiteral("/sysconfig")).toUtf8());
        SettingsStore::useSystemFile(systemSettingsFile(), ::geteuid());
        qputenv("NEBRA_TEST_POLICY_FILE", QFile::encodeName(systemSettingsFile()));
        qputenv("NEBRA_TEST_POLICY_OWNER", QByteArray::number(::geteuid()));
        qputenv("XDG_STATE_HOME", (root + QStringLiteral("/state")).toUtf8());
        qputenv("XDG_DATA_HOME", (root + QStringLiteral("/data")).toUtf8());
        qputenv("XDG_RUNTIME_DIR", (root + QStringLiteral("/runtime")).toUtf8());
        QStandardPaths::setTestModeEnabled(false);
    }

    // For the main() of a test build of a program: reads the system-wide file
    // where the test that started it put it (see above).
    static void adoptTestPolicyFile()
    {
        if (qEnvironmentVariableIsSet("NEBRA_TEST_POLICY_FILE"))
            SettingsStore::useSystemFile(qEnvironmentVariable("NEBRA_TEST_POLICY_FILE"),
                                         uid_t(qEnvironmentVariableIntValue("NEBRA_TEST_POLICY_OWNER")));
    }

    QString root() const { return m_dir.path(); }
    QString home() const { return m_dir.path() + QStringLiteral("/home"); }
    QString settingsFile() const { return m_dir.path() + QStringLiteral("/config/Nebra/Suite.ini"); }
    QString systemSettingsFile() const { return m_dir.path() + QStringLiteral("/sysconfig/Nebra/Suite.ini"); }
    QString stateFolder() const { return m_dir.path() + QStringLiteral("/state"); }

private:
    QTemporaryDir m_dir;
};

} // namespace nebra::test
