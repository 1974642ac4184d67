#include "DocumentTypes.h"

#include "DocumentKinds.h"
#include "Resources.h"
#include "SuitePaths.h"

#include <array>

namespace nebra {

namespace {

using Starts = DocumentLaunch::Starts;
using enum CommandAvailability;

// The programs' launches: operation asked, audit text, program and its
// setting, document argument.
constexpr DocumentLaunch program(const char* operation, const char* auditText,
                                 DocumentLaunch::ProgramPath path, const char* setting,
                                 const char* documentPrefix)
{
    return {Starts::Program, operation, auditText, path, setting, documentPrefix, false};
}

constexpr DocumentLaunch ReadConfigurationEditor =
    program(nullptr, "", &SuitePaths::ReadConfigurationEditorPath, "ReadConfigurationEditorPath", nullptr);
constexpr DocumentLaunch LayoutEditor =
    program(nullptr, "", &SuitePaths::LayoutEditorPath, "LayoutEditorPath", nullptr);
constexpr DocumentLaunch AssayApplication =
    program(nullptr, "", &SuitePaths::AssayApplicationPath, "AssayApplicationPath", nullptr);

constexpr DocumentLaunch with(DocumentLaunch base, const char* operation, const char* auditText,
                              const char* documentPrefix = nullptr)
{
    base.operation = operation;
    base.auditText = auditText;
    base.documentPrefix = documentPrefix;
    return base;
}

constexpr DocumentCommandEntry newItem(DocumentLaunch launch, bool primaryFolderOnly)
{
    return {On, launch, primaryFolderOnly};
}

constexpr DocumentCommandEntry onOneFile(DocumentLaunch launch)
{
    return {SingleFile, launch, false};
}

constexpr DocumentLaunch createLayout()
{
    DocumentLaunch launch = with(LayoutEditor, "CreateLayout", "Create new layout template");
    launch.layoutsFolderWhenSecured = true;
    return launch;
}

// A row of a kind of document: its folder, the list's filter and the type's
// caption are the kind's.
constexpr DocumentTypeDescription ofKind(DocumentType type)
{
    const DocumentKind& kind = DocumentKinds::of(type);
    DocumentTypeDescription row{type};
    row.folder = kind.folder;
    row.filter = kind.pattern;
    row.typeCaption = kind.typeName;
    return row;
}

constexpr DocumentTypeDescription root()
{
    DocumentTypeDescription row{DocumentType::None};
    row.captionResource = Resources::OrganiserCaption;
    row.inTasksGroup = row.inFoldersGroup = true;
    row.icon = "user-home";
    row.listsFolder = false;
    row.followsOptions = true;
    row.helpTopic = 9000;
    return row;
}

constexpr DocumentTypeDescription readConfigurations()
{
    DocumentTypeDescription row = ofKind(DocumentType::ReadConfigurations);
    row.captionResource = Resources::InstrumentDataCaption;
    row.perDriver = true;
    row.inFoldersGroup = true;
    row.icon = "drive-harddisk";
    row.documentIcon = "application-x-nebra-read-configuration";
    row.preview = PreviewKind::Page;
    row.helpTopic = 9005;
    row.newCommand = newItem(
        with(ReadConfigurationEditor, "CreateReadConfiguration", "Create new read configuration"), true);
    row.openCommand =
        onOneFile(with(ReadConfigurationEditor, "OpenReadConfiguration", "Open read configuration: ", ""));
    return row;
}

constexpr DocumentTypeDescription layouts()
{
    DocumentTypeDescription row = ofKind(DocumentType::Layouts);
    row.captionResource = Resources::LayoutsCaption;
    row.inFoldersGroup = true;
    row.documentIcon = "application-x-nebra-layout";
    row.preview = PreviewKind::Layout;
    row.previewedWithoutDrivers = true;
    row.followsOptions = true;
    row.helpTopic = 9006;
    row.newCommand = newItem(createLayout(), true);
    row.openCommand = onOneFile(with(LayoutEditor, "EditLayout", "Edit layout: ", ""));
    return row;
}

constexpr DocumentTypeDescription protocols()
{
    DocumentTypeDescription row = ofKind(DocumentType::Protocols);
    row.captionResource = Resources::ProtocolsCaption;
    row.inTasksGroup = row.inFoldersGroup = true;
    row.documentIcon = "application-x-nebra-protocol";
    row.preview = PreviewKind::Page;
    row.followsOptions = true;
    row.helpTopic = 9001;
    // New protocols are made anywhere in the branch, by the wizard.
    row.newCommand = newItem({Starts::NewProtocolWizard, "CreateProtocol", "Create new protocol"}, false);
    row.openCommand = onOneFile(with(AssayApplication, "OpenProtocol", "Open protocol for edit: ", "/edit "));
    row.runCommand = onOneFile(with(AssayApplication, "RunProtocol", "Run protocol: ", ""));
    return row;
}

constexpr DocumentTypeDescription results()
{
    DocumentTypeDescription row = ofKind(DocumentType::Results);
    row.captionResource = Resources::ResultsCaption;
    row.inTasksGroup = row.inFoldersGroup = true;
    row.documentIcon = "application-x-nebra-results";
    row.preview = PreviewKind::Page;
    row.followsOptions = true;
    row.helpTopic = 9002;
    row.openCommand = onOneFile(with(AssayApplication, "OpenResults", "Open results: ", ""));
    return row;
}

constexpr DocumentTypeDescription reports()
{
    DocumentTypeDescription row = ofKind(DocumentType::Reports);
    row.captionText = "Reports";
    row.inTasksGroup = row.inFoldersGroup = true;
    row.icon = "view-list-details";
    // Every file, also those without an extension, listed with the list's
    // pattern for every file; reports are not previewed.
    row.filter = "*.*";
    row.filterAfterListing = true;
    row.helpTopic = 9003;
    // Recorded but never checked, and opened by the desktop, not a suite program.
    row.openCommand = onOneFile({Starts::FileOpener, nullptr, "Open report: ", nullptr, "", ""});
    return row;
}

// Values the tree does not make. Below 0 the enabling rule's test ("at most
// read configurations") lets New and Open through, and the options treat them
// as the root; above reports nothing changes.
constexpr DocumentTypeDescription belowNone()
{
    DocumentTypeDescription row{DocumentType::None};
    row.followsOptions = true;
    row.newCommand.availability = On;
    row.openCommand.availability = SingleFile;
    return row;
}

constexpr DocumentTypeDescription unknown()
{
    DocumentTypeDescription row{DocumentType::None};
    row.newCommand.availability = row.openCommand.availability = row.runCommand.availability = Unchanged;
    return row;
}

constexpr std::array Rows{root(), readConfigurations(), layouts(), protocols(), results(), reports()};
constexpr DocumentTypeDescription BelowNone = belowNone();
constexpr DocumentTypeDescription Unknown = unknown();

// A node's Data is the index of its type's row.
static_assert([] {
    for (std::size_t i = 0; i < Rows.size(); ++i)
        if (toData(Rows[i].type) != int(i))
            return false;
    return true;
}());

} // namespace

const DocumentCommandEntry* DocumentTypeDescription::command(CommandId id) const
{
    switch (id) {
    case CommandId::New:
        return &newCommand;
    case CommandId::Open:
        return &openCommand;
    case CommandId::Run:
        return &runCommand;
    default:
        return nullptr;
    }
}

std::span<const DocumentTypeDescription> DocumentTypes::all()
{
    return Rows;
}

const DocumentTypeDescription& DocumentTypes::of(int data)
{
    if (data < 0)
        return BelowNone;
    if (data >= int(Rows.size()))
        return Unknown;
    return Rows[data];
}

} // namespace nebra
