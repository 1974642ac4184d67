#include "LayoutDocument.h"

#include "LayoutEditCommand.h"
#include "Messages.h"
#include "PlateLayoutWriter.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace nebra {

LayoutDocument::LayoutDocument(QObject* parent) : QObject(parent), m_layout(QString(), 8, 12)
{
    connect(&m_undo, &QUndoStack::cleanChanged, this, [this](bool clean) { Q_EMIT modifiedChanged(!clean); });
}

QString LayoutDocument::displayName() const
{
    return m_path.isEmpty() ? QStringLiteral("Untitled") : QFileInfo(m_path).fileName();
}

bool LayoutDocument::mayWriteTo(const QString& path) const
{
    if (m_folder.isEmpty())
        return true;
    // Compared as the file system resolves them, so ".." or a link cannot lead out.
    const QString folder = QFileInfo(m_folder).canonicalFilePath();
    const QString target = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath();
    return !folder.isEmpty() && folder == target;
}

void LayoutDocument::newLayout(int rows, int columns)
{
    m_undo.clear();
    m_path.clear();
    m_stamp = {};
    apply(PlateLayout(QString(), rows, columns));
    Q_EMIT formatChanged();
    Q_EMIT pathChanged();
}

bool LayoutDocument::open(const QString& path, QString& error)
{
    std::optional<PlateLayout> layout = PlateLayout::Load(path, error);
    if (!layout)
        return false;
    m_undo.clear();
    m_path = QFileInfo(path).absoluteFilePath();
    m_stamp = stampOf(m_path);
    apply(*layout);
    Q_EMIT formatChanged();
    Q_EMIT pathChanged();
    return true;
}

void LayoutDocument::apply(const PlateLayout& layout)
{
    const bool newFormat = layout.rows() != m_layout.rows() || layout.columns() != m_layout.columns();
    m_layout = layout;
    if (newFormat)
        Q_EMIT formatChanged();
    Q_EMIT layoutChanged();
}

void LayoutDocument::push(const QString& text, PlateLayout after)
{
    m_undo.push(new LayoutEditCommand(text, m_layout, std::move(after),
                                      [this](const PlateLayout& layout) { apply(layout); }));
}

bool LayoutDocument::editWells(const QList<std::pair<int, Well>>& wells, const QString& text)
{
    // Only the wells named are compared, so a large plate costs no full comparison per edit.
    PlateLayout after = m_layout;
    bool changed = false;
    for (const auto& [index, well] : wells) {
        if (m_layout.wells()[index] == well)
            continue;
        after.setWell(index, well);
        changed = true;
    }
    if (changed)
        push(text, std::move(after));
    return changed;
}

void LayoutDocument::assignRole(const QList<int>& wells, WellRole role)
{
    QList<std::pair<int, Well>> changes;
    changes.reserve(wells.size());
    for (int index : wells) {
        Well well = m_layout.wells()[index];
        well.role = role;
        // A concentration belongs to a standard: the role's change takes it away.
        if (role != WellRole::Standard)
            well.concentration.reset();
        changes.append({index, std::move(well)});
    }
    editWells(changes, QStringLiteral("Set role %1").arg(PlateLayout::roleName(role)));
}

void LayoutDocument::assignLabel(const QList<int>& wells, const QString& label)
{
    QList<std::pair<int, Well>> changes;
    changes.reserve(wells.size());
    for (int index : wells) {
        Well well = m_layout.wells()[index];
        well.label = label.trimmed();
        changes.append({index, std::move(well)});
    }
    editWells(changes, QStringLiteral("Set label"));
}

void LayoutDocument::numberSamples(const QList<int>& wells, bool byColumns, const QString& prefix)
{
    QList<int> order = wells;
    const int columns = m_layout.columns();
    const int rows = m_layout.rows();
    if (byColumns)
        std::sort(order.begin(), order.end(), [columns, rows](int a, int b) {
            return (a % columns) * rows + a / columns < (b % columns) * rows + b / columns;
        });
    else
        std::sort(order.begin(), order.end());
    QList<std::pair<int, Well>> changes;
    int number = 0;
    for (int index : std::as_const(order)) {
        Well well = m_layout.wells()[index];
        if (well.role != WellRole::Sample)
            continue;
        well.label = prefix + QString::number(++number);
        changes.append({index, std::move(well)});
    }
    editWells(changes, QStringLiteral("Number samples"));
}

bool LayoutDocument::fillSeries(const StandardSeries& series, int startRow, int startColumn, QString& error)
{
    const QList<std::pair<int, Well>> wells =
        series.plan(m_layout.rows(), m_layout.columns(), startRow, startColumn, error);
    if (wells.isEmpty())
        return false;
    editWells(wells, QStringLiteral("Standards series"));
    return true;
}

bool LayoutDocument::paste(const WellBlock& block, int row, int column, QString& error)
{
    if (row + block.rows > m_layout.rows() || column + block.columns > m_layout.columns()) {
        error = QStringLiteral("The copied block of %1 x %2 wells does not fit on the plate from well %3.")
                    .arg(block.rows)
                    .arg(block.columns)
                    .arg(PlateLayout::wellName(row, column));
        return false;
    }
    QList<std::pair<int, Well>> changes;
    for (int r = 0; r < block.rows; ++r)
        for (int c = 0; c < block.columns; ++c)
            changes.append({(row + r) * m_layout.columns() + column + c, block.wells[r * block.columns + c]});
    editWells(changes, QStringLiteral("Paste"));
    return true;
}

void LayoutDocument::rename(const QString& name)
{
    if (name == m_layout.name())
        return;
    PlateLayout after = m_layout;
    after.setName(name);
    push(QStringLiteral("Rename"), std::move(after));
}

void LayoutDocument::changeFormat(int rows, int columns)
{
    if (rows == m_layout.rows() && columns == m_layout.columns())
        return;
    PlateLayout after(m_layout.name(), rows, columns);
    for (int r = 0; r < std::min(rows, m_layout.rows()); ++r)
        for (int c = 0; c < std::min(columns, m_layout.columns()); ++c)
            after.setWell(r, c, m_layout.well(r, c));
    push(QStringLiteral("Plate of %1 wells").arg(rows * columns), std::move(after));
}

LayoutDocument::FileStamp LayoutDocument::stampOf(const QString& path)
{
    const QFileInfo info(path);
    FileStamp stamp{info.lastModified(), info.exists() ? info.size() : -1, {}};
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        QCryptographicHash hash(QCryptographicHash::Sha256);
        hash.addData(&file);
        stamp.digest = hash.result();
    }
    return stamp;
}

bool LayoutDocument::write(const QString& path, QString& error)
{
    if (!PlateLayoutWriter::Save(m_layout, path, error)) {
        error = QStringLiteral("The layout could not be saved as \"%1\": %2")
                    .arg(QDir::toNativeSeparators(path), error);
        return false;
    }
    const bool newPath = path != m_path;
    m_path = path;
    m_stamp = stampOf(path);
    m_undo.setClean();
    if (newPath)
        Q_EMIT pathChanged();
    return true;
}

LayoutDocument::SaveResult LayoutDocument::save(QString& error)
{
    if (m_path.isEmpty()) {
        error = QStringLiteral("The layout has no file yet.");
        return SaveResult::Failed;
    }
    if (!mayWriteTo(m_path)) {
        error = QStringLiteral("Layouts can only be saved in the folder \"%1\".").arg(m_folder);
        return SaveResult::Failed;
    }
    // The file was changed (or replaced) by someone else since it was read here.
    if (QFileInfo::exists(m_path) && !stampOf(m_path).sameContent(m_stamp))
        return keepBothVersions(error);
    return write(m_path, error) ? SaveResult::Saved : SaveResult::Failed;
}

LayoutDocument::SaveResult LayoutDocument::keepBothVersions(QString& error)
{
    const QString copy = freeSiblingPath(m_path);
    const int answer = Messages::show(
        {QStringLiteral("\"%1\" has been changed by another program since it was opened here.\n\n"
                        "Your version will be saved as \"%2\" beside it; the other version is kept as it is.")
             .arg(QFileInfo(m_path).fileName(), QFileInfo(copy).fileName()),
         QString(), MessageIcon::Warning, MessageButton::Ok | MessageButton::Cancel, MessageButton::Ok,
         this});
    if (answer != MessageButton::Ok)
        return SaveResult::Cancelled;
    return write(copy, error) ? SaveResult::Saved : SaveResult::Failed;
}

LayoutDocument::SaveResult LayoutDocument::saveAs(QString path, QString& error)
{
    if (!path.endsWith(QLatin1String(".mlo"), Qt::CaseInsensitive))
        path += QStringLiteral(".mlo");
    path = QFileInfo(path).absoluteFilePath();
    if (!mayWriteTo(path)) {
        error = QStringLiteral("Layouts can only be saved in the folder \"%1\".").arg(m_folder);
        return SaveResult::Failed;
    }
    if (path == m_path)
        return save(error);
    if (QFileInfo::exists(path)) {
        const int answer =
            Messages::show({QStringLiteral("\"%1\" already exists.\nDo you want to replace it?")
                                .arg(QFileInfo(path).fileName()),
                            QString(), MessageIcon::Question, MessageButton::Yes | MessageButton::No,
                            MessageButton::No, this});
        if (answer != MessageButton::Yes)
            return SaveResult::Cancelled;
    }
    return write(path, error) ? SaveResult::Saved : SaveResult::Failed;
}

QString LayoutDocument::freeSiblingPath(const QString& path)
{
    const QFileInfo info(path);
    const QString stem = info.path() + QLatin1Char('/') + info.completeBaseName();
    for (int n = 1;; ++n) {
        const QString candidate =
            stem + (n == 1 ? QStringLiteral(" (edited)") : QStringLiteral(" (edited %1)").arg(n)) +
            QStringLiteral(".mlo");
        if (!QFileInfo::exists(candidate))
            return candidate;
    }
}

} // namespace nebra
