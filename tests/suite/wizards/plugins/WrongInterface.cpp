// A plug-in with the right metadata key but another interface: the host
// must refuse it instead of calling into it.
#include <QObject>
#include <QtPlugin>

class WrongInterface : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.nebra.SomethingElse/1.0" FILE "WrongInterface.json")
};

#include "WrongInterface.moc"
