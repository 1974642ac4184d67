#include "Resources.h"

#include <QCoreApplication>

namespace nebra {

QString Resources::LoadResString(int id) const
{
    switch (id) {
    case ProductTitle:
        return QCoreApplication::translate("Resources", "Tallyo Organiser");
    case TasksGroupCaption:
        return QCoreApplication::translate("Resources", "Tasks");
    case FoldersGroupCaption:
        return QCoreApplication::translate("Resources", "Folders");
    case OrganiserCaption:
        return QCoreApplication::translate("Resources", "Organiser");
    case InstrumentDataCaption:
        return QCoreApplication::translate("Resources", "Instrument Data");
    case LayoutsCaption:
        return QCoreApplication::translate("Resources", "Microplate Layouts");
    case ProtocolsCaption:
        return QCoreApplication::translate("Resources", "Protocols");
    case ResultsCaption:
        return QCoreApplication::translate("Resources", "Results");
    case TreeCaption:
        return QCoreApplication::translate("Resources", "Assay Folders");
    default:
        return {};
    }
}

} // namespace nebra
