#pragma once

#include <QObject>

namespace nebra::test {

// The child control of `parent` with the object name given; a form without
// it ends the test program, as every later step would fail on it.
template <typename T> T* control(const QObject& parent, const char* name)
{
    T* found = parent.findChild<T*>(QLatin1String(name));
    if (!found)
        qFatal("No control %s in %s", name, qPrintable(parent.objectName()));
    return found;
}

} // namespace nebra::test
