#pragma once

#include <QString>

namespace nebra {

class FileListControl;

// One item of the file list. Its name, path and folder flag are kept in the
// handle, so they can still be read after the item left the list (as in an
// item-removed event); selection and scrolling act on the item only while
// it is still listed (isListed()).
class FileListItem
{
public:
    // The shell's folder attribute, the one attribute the Organiser tests.
    static constexpr quint32 FolderAttribute = 0x20000000;

    FileListItem() = default;

    bool isValid() const { return m_control != nullptr; }
    bool isListed() const;

    // The name as the list shows it (without its extension while the list hides extensions).
    QString name() const { return m_name; }
    QString path() const { return m_path; }
    bool isFolder() const { return m_folder; }
    // The item's attributes among mask (FolderAttribute for a folder).
    quint32 attributes(quint32 mask) const { return m_folder ? (mask & FolderAttribute) : 0; }

    bool isSelected() const;
    void setSelected(bool selected) const;
    void ensureVisible() const;

    bool operator==(const FileListItem& other) const
    {
        return m_control == other.m_control && m_generation == other.m_generation && m_id == other.m_id;
    }

private:
    friend class FileListControl;
    FileListItem(FileListControl* control, quint32 generation, qint32 id, QString name, QString path,
                 bool folder)
        : m_control(control), m_generation(generation), m_id(id), m_name(std::move(name)),
          m_path(std::move(path)), m_folder(folder)
    {
    }

    FileListControl* m_control = nullptr;
    quint32 m_generation = 0;
    qint32 m_id = -1;
    QString m_name;
    QString m_path;
    bool m_folder = false;
};

} // namespace nebra
