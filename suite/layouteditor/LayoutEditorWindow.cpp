#include "LayoutEditorWindow.h"

#include "Dialogs.h"
#include "EditorPanel.h"
#include "LayoutCanvas.h"
#include "LayoutDocument.h"
#include "Messages.h"
#include "WellSelection.h"

#include <QAction>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMenuBar>
#include <QScrollArea>
#include <QStatusBar>
#include <QToolBar>
#include <QUndoStack>

#include <array>

namespace nebra {

LayoutEditorWindow::LayoutEditorWindow(LayoutDocument& document, QWidget* parent)
    : QMainWindow(parent), m_document(document)
{
    setObjectName(QStringLiteral("LayoutEditorWindow"));
    m_selection = new WellSelection(document.layout().rows(), document.layout().columns(), this);
    m_canvas = new LayoutCanvas(document, *m_selection);
    m_scroll = new QScrollArea;
    m_scroll->setAccessibleName(QStringLiteral("Plate"));
    m_scroll->setWidgetResizable(true);
    m_scroll->setWidget(m_canvas);
    setCentralWidget(m_scroll);
    m_panel = new EditorPanel;
    auto* dock = new QDockWidget(QStringLiteral("Controls"), this);
    dock->setObjectName(QStringLiteral("ControlsDock"));
    dock->setAccessibleName(QStringLiteral("Controls"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(m_panel);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    m_folderLabel = new QLabel;
    m_folderLabel->setAccessibleName(QStringLiteral("Save folder"));
    statusBar()->addPermanentWidget(m_folderLabel);
    createMenus();
    connectPanel();
    connect(&document, &LayoutDocument::formatChanged, this,
            [this] { m_selection->reset(m_document.layout().rows(), m_document.layout().columns()); });
    connect(&document, &LayoutDocument::layoutChanged, this,
            [this] { m_panel->showLayout(m_document.layout()); });
    connect(&document, &LayoutDocument::pathChanged, this, &LayoutEditorWindow::updateTitle);
    connect(&document, &LayoutDocument::modifiedChanged, this, &LayoutEditorWindow::updateTitle);
    m_panel->showLayout(document.layout());
    updateTitle();
    resize(1100, 700);
    m_canvas->setFocus();
}

void LayoutEditorWindow::createMenus()
{
    createFileActions(menuBar()->addMenu(QStringLiteral("&File")));
    createEditActions(menuBar()->addMenu(QStringLiteral("&Edit")));
    createWellActions(menuBar()->addMenu(QStringLiteral("&Wells")));
    createViewActions(menuBar()->addMenu(QStringLiteral("&View")));
    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    makeAction(help, QStringLiteral("&About the Layout Editor"), QKeySequence(), [this] { showAbout(); });
    QToolBar* tools = addToolBar(QStringLiteral("Main"));
    tools->setObjectName(QStringLiteral("MainToolBar"));
    tools->setAccessibleName(QStringLiteral("Main tool bar"));
    for (const char* name : {"New", "Open", "Save", "Undo", "Redo", "Copy", "Paste", "Zoom In", "Zoom Out"})
        tools->addAction(action(QLatin1String(name)));
}

QAction* LayoutEditorWindow::makeAction(QMenu* menu, const QString& text, const QKeySequence& keys,
                                        std::function<void()> slot)
{
    QAction* result = menu->addAction(text);
    result->setObjectName(QString(text).remove(QLatin1Char('&')).remove(QStringLiteral("...")));
    result->setShortcut(keys);
    connect(result, &QAction::triggered, this, std::move(slot));
    return result;
}

QAction* LayoutEditorWindow::action(const QString& name) const
{
    return findChild<QAction*>(name);
}

void LayoutEditorWindow::createFileActions(QMenu* menu)
{
    makeAction(menu, QStringLiteral("&New"), QKeySequence::New, [this] { newLayout(); });
    makeAction(menu, QStringLiteral("&Open..."), QKeySequence::Open, [this] { openLayout(); });
    makeAction(menu, QStringLiteral("&Save"), QKeySequence::Save, [this] { saveDocument(); });
    makeAction(menu, QStringLiteral("Save &As..."), QKeySequence::SaveAs, [this] { saveDocumentAs(); });
    menu->addSeparator();
    makeAction(menu, QStringLiteral("&Quit"), QKeySequence::Quit, [this] { close(); });
}

void LayoutEditorWindow::createEditActions(QMenu* menu)
{
    // Fixed texts, with the step named in the tool tip: a text that changed
    // with every edit would lay out the menu and tool bar again each time.
    QUndoStack& stack = m_document.undoStack();
    QAction* undo = makeAction(menu, QStringLiteral("&Undo"), QKeySequence::Undo, [&stack] { stack.undo(); });
    QAction* redo = makeAction(menu, QStringLiteral("&Redo"), QKeySequence::Redo, [&stack] { stack.redo(); });
    const auto follow = [undo, redo, &stack] {
        undo->setEnabled(stack.canUndo());
        undo->setToolTip(QStringLiteral("Undo %1").arg(stack.undoText()));
        redo->setEnabled(stack.canRedo());
        redo->setToolTip(QStringLiteral("Redo %1").arg(stack.redoText()));
    };
    connect(&stack, &QUndoStack::indexChanged, this, follow);
    connect(&stack, &QUndoStack::cleanChanged, this, follow);
    follow();
    menu->addSeparator();
    makeAction(menu, QStringLiteral("&Copy"), QKeySequence::Copy, [this] { copyWells(); });
    makeAction(menu, QStringLiteral("&Paste"), QKeySequence::Paste, [this] { pasteWells(); });
    makeAction(menu, QStringLiteral("Select &All"), QKeySequence::SelectAll,
               [this] { m_selection->selectAll(); });
}

void LayoutEditorWindow::createWellActions(QMenu* menu)
{
    // One key per role, so that the plate can be filled without leaving it.
    const std::array<std::pair<WellRole, const char*>, 5> roles{{{WellRole::Sample, "&Sample"},
                                                                 {WellRole::Standard, "S&tandard"},
                                                                 {WellRole::Control, "&Control"},
                                                                 {WellRole::Blank, "&Blank"},
                                                                 {WellRole::Empty, "&Empty"}}};
    int key = Qt::Key_1;
    for (const auto& [role, text] : roles) {
        QAction* action =
            makeAction(menu, QLatin1String(text), QKeySequence(Qt::CTRL | Qt::Key(key++)),
                       [this, role = role] { m_document.assignRole(m_selection->indices(), role); });
        action->setObjectName(QStringLiteral("Role ") + PlateLayout::roleName(role));
    }
    action(QStringLiteral("Role empty"))
        ->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_5), QKeySequence::Delete});
}

void LayoutEditorWindow::createViewActions(QMenu* menu)
{
    makeAction(menu, QStringLiteral("Zoom &In"), QKeySequence::ZoomIn, [this] { zoomBy(1.25); });
    makeAction(menu, QStringLiteral("Zoom &Out"), QKeySequence::ZoomOut, [this] { zoomBy(0.8); });
    makeAction(menu, QStringLiteral("&Fit to Window"), QKeySequence(Qt::CTRL | Qt::Key_0),
               [this] { m_canvas->setZoom(1); });
    makeAction(menu, QStringLiteral("&Plate"), QKeySequence(Qt::Key_F6), [this] { m_canvas->setFocus(); });
}

void LayoutEditorWindow::connectPanel()
{
    connect(m_panel, &EditorPanel::renameRequested, this, [this](const QString& name) {
        if (name != m_document.layout().name())
            m_document.rename(name);
    });
    connect(m_panel, &EditorPanel::formatRequested, this,
            [this](int rows, int columns) { m_document.changeFormat(rows, columns); });
    connect(m_panel, &EditorPanel::roleRequested, this,
            [this] { m_document.assignRole(m_selection->indices(), m_panel->role()); });
    connect(m_panel, &EditorPanel::labelRequested, this,
            [this] { m_document.assignLabel(m_selection->indices(), m_panel->label()); });
    connect(m_panel, &EditorPanel::numberingRequested, this, [this] {
        // One selected well means "the whole plate": numbering a single well is never wanted.
        QList<int> wells = m_selection->indices();
        if (wells.size() <= 1) {
            wells.clear();
            for (int i = 0; i < m_document.layout().wellCount(); ++i)
                wells.append(i);
        }
        m_document.numberSamples(wells, m_panel->numberByColumns(), m_panel->samplePrefix());
    });
    connect(m_panel, &EditorPanel::seriesRequested, this, [this] {
        const QRect bounds = m_selection->bounds();
        QString error;
        if (!m_document.fillSeries(m_panel->series(), bounds.top(), bounds.left(), error))
            showError(error);
    });
}

void LayoutEditorWindow::updateTitle()
{
    setWindowTitle(m_document.displayName() + QStringLiteral("[*] - Layout Editor"));
    setWindowModified(m_document.isModified());
    m_folderLabel->setText(m_document.folderRestriction().isEmpty()
                               ? QString()
                               : QStringLiteral("Saved only in: %1")
                                     .arg(QDir::toNativeSeparators(m_document.folderRestriction())));
}

void LayoutEditorWindow::showError(const QString& text)
{
    Messages::show({text, QString(), MessageIcon::Warning, MessageButton::Ok, MessageButton::Ok, this});
}

void LayoutEditorWindow::newLayout()
{
    if (!maybeSave())
        return;
    m_document.newLayout(m_document.layout().rows(), m_document.layout().columns());
}

void LayoutEditorWindow::openLayout()
{
    if (!maybeSave())
        return;
    QFileDialog dialog(this, QStringLiteral("Open Layout"), QFileInfo(m_document.path()).path(),
                       QStringLiteral("Microplate layouts (*.mlo)"));
    dialog.setAccessibleName(QStringLiteral("Open layout"));
    dialog.setFileMode(QFileDialog::ExistingFile);
    if (Dialogs::exec(dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    QString error;
    if (!m_document.open(dialog.selectedFiles().constFirst(), error))
        showError(QStringLiteral("The layout could not be opened.\n\n%1").arg(error));
}

bool LayoutEditorWindow::saveDocument()
{
    if (m_document.path().isEmpty())
        return saveDocumentAs();
    QString error;
    const LayoutDocument::SaveResult result = m_document.save(error);
    if (result == LayoutDocument::SaveResult::Failed)
        showError(error);
    return result == LayoutDocument::SaveResult::Saved;
}

bool LayoutEditorWindow::saveDocumentAs()
{
    QFileDialog dialog(this, QStringLiteral("Save Layout As"), saveAsFolder(),
                       QStringLiteral("Microplate layouts (*.mlo)"));
    dialog.setAccessibleName(QStringLiteral("Save layout as"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("mlo"));
    // The document asks before replacing a file, the same way for every path.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    const QString name = m_document.layout().name().trimmed();
    if (!name.isEmpty())
        dialog.selectFile(name + QStringLiteral(".mlo"));
    if (Dialogs::exec(dialog) != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    QString error;
    const LayoutDocument::SaveResult result = m_document.saveAs(dialog.selectedFiles().constFirst(), error);
    if (result == LayoutDocument::SaveResult::Failed)
        showError(error);
    return result == LayoutDocument::SaveResult::Saved;
}

QString LayoutEditorWindow::saveAsFolder() const
{
    if (!m_document.folderRestriction().isEmpty())
        return m_document.folderRestriction();
    if (!m_document.path().isEmpty())
        return QFileInfo(m_document.path()).path();
    // A layout saved anywhere else never shows up in the Organiser's list.
    if (!m_startFolder.isEmpty() && QFileInfo(m_startFolder).isDir())
        return m_startFolder;
    return QDir::homePath();
}

bool LayoutEditorWindow::maybeSave()
{
    if (!m_document.isModified())
        return true;
    const int answer = Messages::show(
        {QStringLiteral("The layout \"%1\" has unsaved changes.\nDo you want to save them?")
             .arg(m_document.displayName()),
         QString(), MessageIcon::Warning, MessageButton::Yes | MessageButton::No | MessageButton::Cancel,
         MessageButton::Yes, this});
    if (answer == MessageButton::Yes)
        return saveDocument();
    return answer == MessageButton::No;
}

void LayoutEditorWindow::closeEvent(QCloseEvent* event)
{
    if (maybeSave())
        event->accept();
    else
        event->ignore();
}

void LayoutEditorWindow::copyWells()
{
    const WellBlock block = WellBlock::Copy(m_document.layout(), m_selection->bounds());
    QGuiApplication::clipboard()->setText(block.toText());
    statusBar()->showMessage(QStringLiteral("%1 wells copied").arg(block.wells.size()), 3000);
}

void LayoutEditorWindow::pasteWells()
{
    const std::optional<WellBlock> block = WellBlock::FromText(QGuiApplication::clipboard()->text());
    if (!block) {
        showError(QStringLiteral("The clipboard holds no wells copied from a layout."));
        return;
    }
    const QRect bounds = m_selection->bounds();
    QString error;
    if (!m_document.paste(*block, bounds.top(), bounds.left(), error)) {
        showError(error);
        return;
    }
    m_selection->selectRect(QRect(bounds.left(), bounds.top(), block->columns, block->rows));
}

void LayoutEditorWindow::zoomBy(double factor)
{
    m_canvas->setZoom(m_canvas->zoom() * factor);
}

void LayoutEditorWindow::showAbout()
{
    Messages::show({QStringLiteral("Layout Editor %1\nDraws the microplate layouts of the Nebra suite.")
                        .arg(QStringLiteral(NEBRA_VERSION)),
                    QStringLiteral("About the Layout Editor"), MessageIcon::Information, MessageButton::Ok,
                    MessageButton::Ok, this});
}

} // namespace nebra
