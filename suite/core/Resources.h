#pragma once

#include <QString>

namespace nebra {

// The suite's string resources: user-visible texts that are not literals of a
// program (product title, captions of the shortcuts bar and the folder tree).
class Resources
{
public:
    enum Id
    {
        ProductTitle = 101,
        TasksGroupCaption = 201,
        FoldersGroupCaption = 202,
        OrganiserCaption = 204,
        InstrumentDataCaption = 206,
        LayoutsCaption = 207,
        ProtocolsCaption = 208,
        ResultsCaption = 209,
        TreeCaption = 211,
    };

    // The text of a string resource; empty for an id the table does not hold.
    QString LoadResString(int id) const;
};

} // namespace nebra
