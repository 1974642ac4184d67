#pragma once

#include "AssayProtocol.h"

#include <QHash>
#include <QString>

namespace nebra {

// Reads the text of a protocol file into an AssayProtocol, line by line,
// checking every rule of the format; the first fault stops it.
class ProtocolReader
{
public:
    std::optional<AssayProtocol> read(const QString& text, QString& error);

private:
    struct Value
    {
        int line = 0;
        QString text;
    };
    using Section = QHash<QString, Value>; // keys in lower case

    bool split(const QString& text, QString& error);
    bool readProtocolSection(AssayProtocol& protocol, QString& error) const;
    bool readSettings(ReadSettings& settings, QString& error) const;
    bool readMode(ReadSettings& settings, QString& error) const;
    bool readTiming(ReadSettings& settings, QString& error) const;
    bool readShakingAndTemperature(ReadSettings& settings, QString& error) const;
    bool number(const char* key, int low, int high, int& out, QString& error) const;
    bool choice(const char* key, const QStringList& names, int& out, QString& error) const;

    Section m_protocol;
    Section m_read;
    bool m_hasProtocol = false;
    bool m_hasRead = false;
    int m_readLine = 0;
};

} // namespace nebra
