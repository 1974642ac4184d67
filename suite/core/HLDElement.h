#pragma once

#include <QString>

namespace nebra {

// One installed instrument driver.
struct HLDElement
{
    QString FullName;   // shown to the user, and the name of the driver's read-configuration folder
    QString Instrument; // the reader family the driver serves
    QString Version;
};

} // namespace nebra
