#pragma once

#include "Messages.h"

#include <QString>
#include <QStringList>

namespace nebra {

class LayoutDocument;
class LayoutEditorWindow;

// A start-up check for installations and tests: when the environment names a
// report file, the editor starts as usual, then writes what it opened (title,
// wells, the folder it may save to, the folder "Save Layout As" opens in, the
// messages it would have shown) into that file and quits instead of waiting
// for a user. Without it, nothing changes. Messages are recorded rather than shown while it is active.
class StartupReport
{
public:
    explicit StartupReport(const QString& path);
    ~StartupReport();
    StartupReport(const StartupReport&) = delete;
    StartupReport& operator=(const StartupReport&) = delete;

    bool isActive() const { return !m_path.isEmpty(); }
    // Writes the report and ends the event loop.
    void write(const LayoutEditorWindow& window, const LayoutDocument& document);

private:
    QString m_path;
    QStringList m_messages;
    Messages::Handler m_previous;
};

} // namespace nebra
