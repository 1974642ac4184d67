#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>

namespace nebra {

// Shows documents in the desktop's file manager, selected in their folder:
// through the freedesktop file-manager interface on the session bus
// (org.freedesktop.FileManager1, ShowItems), which the common file managers
// offer. Without a session bus, or when no file manager answers, the folder
// of the first document is opened with the desktop's opener instead, which
// shows the folder without selecting anything.
class FileManager
{
public:
    using OpenUrl = std::function<bool(const QUrl&)>;

    // openUrl opens a folder when the bus cannot help (QDesktopServices by default).
    explicit FileManager(OpenUrl openUrl = {});

    // Returns false when neither way worked.
    bool showItems(const QStringList& paths) const;

    static constexpr const char* Service = "org.freedesktop.FileManager1";
    static constexpr const char* ObjectPath = "/org/freedesktop/FileManager1";

private:
    bool showOnBus(const QStringList& paths) const;

    OpenUrl m_openUrl;
};

} // namespace nebra
