#include "DocumentTypes.h"

namespace nebra {

QString DocumentTypes::filter(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("*.daq");
    case 2:
        return QStringLiteral("*.mlo");
    case 3:
        return QStringLiteral("*.apr");
    case 4:
        return QStringLiteral("*.ars");
    case 5:
        return QStringLiteral("*.*");
    default:
        return {};
    }
}

QString DocumentTypes::caption(int type)
{
    switch (type) {
    case 1:
        return QStringLiteral("Data Acquisition");
    case 2:
        return QStringLiteral("Layout");
    case 3:
        return QStringLiteral("Assay Protocol");
    case 4:
        return QStringLiteral("Assay Results");
    case 5:
        return QStringLiteral("Assay Report");
    default:
        return {};
    }
}

int DocumentTypes::helpContextId(int type)
{
    switch (type) {
    case 0:
        return 9000;
    case 1:
        return 9005;
    case 2:
        return 9006;
    case 3:
        return 9001;
    case 4:
        return 9002;
    case 5:
        return 9003;
    default:
        return 0;
    }
}

std::optional<DocumentTypes::CommandStates> DocumentTypes::commandStates(int type, bool singleFile)
{
    if (type == 0)
        return CommandStates{};
    // After 0 is excluded the first test is "at most 1", so negative values
    // fall in with read configurations.
    if (type <= 1 || type == 2)
        return CommandStates{true, singleFile, false};
    if (type == 3)
        return CommandStates{true, singleFile, singleFile};
    if (type == 4 || type == 5)
        return CommandStates{false, singleFile, false};
    return std::nullopt;
}

} // namespace nebra
