#pragma once

#include "HLDElement.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace nebra {

// The installed instrument drivers, read from the suite's driver catalogue
// (a JSON file; format in docs/configuration.md):
//
//   { "drivers": [ { "FullName": "...", "Instrument": "...", "Version": "..." }, ... ] }
//
// A missing catalogue means no drivers are installed. A catalogue that cannot
// be read or parsed also yields no drivers, and errorString() says why.
class HLDCollection
{
public:
    HLDCollection() = default;
    explicit HLDCollection(const QString& catalogueFile);
    // Reads a catalogue's text; shownName names it in errorString().
    static HLDCollection Parse(const QByteArray& content, const QString& shownName);

    // Far more than any suite installs; a larger file is refused unread.
    static constexpr qint64 MaximumFileSize = 4 * 1024 * 1024;

    const QList<HLDElement>& Items() const { return m_items; }
    int Count() const { return int(m_items.size()); }
    // 1-based, as the driver index setting CurrentHLD counts.
    const HLDElement& Item(int index) const { return m_items.at(index - 1); }

    QString errorString() const { return m_error; }

private:
    void read(const QByteArray& content, const QString& shownName);

    QList<HLDElement> m_items;
    QString m_error;
};

} // namespace nebra
