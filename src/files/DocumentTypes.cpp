#include "DocumentTypes.h"

namespace nebra {

QString DocumentTypes::filter(FolderKind type)
{
    switch (type) {
    case FolderKind::ReadConfigurations:
        return QStringLiteral("*.daq");
    case FolderKind::Layouts:
        return QStringLiteral("*.mlo");
    case FolderKind::Protocols:
        return QStringLiteral("*.apr");
    case FolderKind::Results:
        return QStringLiteral("*.ars");
    case FolderKind::Reports:
        return QStringLiteral("*.*");
    default:
        return {};
    }
}

QString DocumentTypes::caption(FolderKind type)
{
    switch (type) {
    case FolderKind::ReadConfigurations:
        return QStringLiteral("Data Acquisition");
    case FolderKind::Layouts:
        return QStringLiteral("Layout");
    case FolderKind::Protocols:
        return QStringLiteral("Assay Protocol");
    case FolderKind::Results:
        return QStringLiteral("Assay Results");
    case FolderKind::Reports:
        return QStringLiteral("Assay Report");
    default:
        return {};
    }
}

int DocumentTypes::helpContextId(FolderKind type)
{
    switch (type) {
    case FolderKind::None:
        return 9000;
    case FolderKind::ReadConfigurations:
        return 9005;
    case FolderKind::Layouts:
        return 9006;
    case FolderKind::Protocols:
        return 9001;
    case FolderKind::Results:
        return 9002;
    case FolderKind::Reports:
        return 9003;
    default:
        return 0;
    }
}

std::optional<DocumentTypes::CommandStates> DocumentTypes::commandStates(FolderKind type, bool singleFile)
{
    switch (type) {
    case FolderKind::None:
        return CommandStates{};
    case FolderKind::ReadConfigurations:
    case FolderKind::Layouts:
        return CommandStates{true, singleFile, false};
    case FolderKind::Protocols:
        return CommandStates{true, singleFile, singleFile};
    case FolderKind::Results:
    case FolderKind::Reports:
        return CommandStates{false, singleFile, false};
    }
    // Values the tree does not make: below the root they count as read
    // configurations, above reports they leave the commands alone.
    if (toData(type) < 0)
        return CommandStates{true, singleFile, false};
    return std::nullopt;
}

} // namespace nebra
