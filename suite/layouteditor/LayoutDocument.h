#pragma once

#include "PlateLayout.h"
#include "StandardSeries.h"
#include "WellBlock.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QUndoStack>

namespace nebra {

// The layout being edited, its file and its undo history. Every change goes
// through the undo stack; the document is modified while the stack is away
// from the state last saved or opened.
//
// Saving never loses a version: another existing file is replaced only when
// the user agrees, and a file that another program changed since it was
// opened here is kept, the edited layout going to a new file beside it. The
// questions are asked through nebra::Messages.
class LayoutDocument : public QObject
{
    Q_OBJECT
public:
    enum class SaveResult
    {
        Saved,
        Cancelled,
        Failed
    };

    explicit LayoutDocument(QObject* parent = nullptr);

    const PlateLayout& layout() const { return m_layout; }
    QUndoStack& undoStack() { return m_undo; }
    QString path() const { return m_path; }
    // The file name without its folder, or "Untitled".
    QString displayName() const;
    bool isModified() const { return !m_undo.isClean(); }

    // When set, the layout may only be saved into this folder.
    void setFolderRestriction(const QString& folder) { m_folder = folder; }
    QString folderRestriction() const { return m_folder; }
    // Whether path is in the restricting folder (always true without one).
    bool mayWriteTo(const QString& path) const;

    void newLayout(int rows, int columns);
    bool open(const QString& path, QString& error);

    // Edits, each one undo step; an edit that changes nothing is not recorded.
    void assignRole(const QList<int>& wells, WellRole role);
    void assignLabel(const QList<int>& wells, const QString& label);
    // Labels the sample wells among wells prefix1, prefix2, ... in row or column order.
    void numberSamples(const QList<int>& wells, bool byColumns, const QString& prefix);
    bool fillSeries(const StandardSeries& series, int startRow, int startColumn, QString& error);
    bool paste(const WellBlock& block, int row, int column, QString& error);
    void rename(const QString& name);
    // Wells outside the new plate are dropped; those inside keep their place.
    void changeFormat(int rows, int columns);

    SaveResult save(QString& error);
    SaveResult saveAs(QString path, QString& error);

    // A file name beside path that does not exist yet: "<base> (edited).mlo", "(edited 2)", ...
    static QString freeSiblingPath(const QString& path);

Q_SIGNALS:
    void layoutChanged();
    void formatChanged();
    void pathChanged();
    void modifiedChanged(bool modified);

private:
    struct FileStamp
    {
        QDateTime modified;
        qint64 size = -1;
        QByteArray digest;
        // The content decides: a file saved again unchanged is no conflict.
        bool sameContent(const FileStamp& other) const
        {
            return size == other.size && digest == other.digest;
        }
    };
    static FileStamp stampOf(const QString& path);

    void push(const QString& text, PlateLayout after);
    // One undo step setting the wells given; none when they are as they were.
    bool editWells(const QList<std::pair<int, Well>>& wells, const QString& text);
    void apply(const PlateLayout& layout);
    bool write(const QString& path, QString& error);
    SaveResult keepBothVersions(QString& error);

    PlateLayout m_layout;
    QUndoStack m_undo;
    QString m_path;
    QString m_folder;
    FileStamp m_stamp; // of m_path when it was opened or last saved
};

} // namespace nebra
