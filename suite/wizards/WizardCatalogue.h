#pragma once

#include <QList>
#include <QString>

namespace nebra {

// One installed wizard: the name shown in the picker (and the name of its
// folder under the wizards folder) and the identifier of its plug-in.
struct WizardEntry
{
    QString Name;
    QString ProgID;
};

// The catalogue's wizards in registration order, counted from 1.
class WizardCollection
{
public:
    int Count() const { return int(m_items.size()); }
    const WizardEntry& Item(int index) const { return m_items.at(index - 1); }
    const QList<WizardEntry>& items() const { return m_items; }
    void append(WizardEntry entry) { m_items.append(std::move(entry)); }

private:
    QList<WizardEntry> m_items;
};

// The installed new-assay-protocol wizards, read from the wizard catalogue
// (a JSON file in the suite's data folder; format in docs/wizards.md):
//
//   { "wizards": [ { "Name": "Generic", "ProgID": "NebraWizards.Generic" }, ... ] }
//
// Entries keep the file's order; none is sorted away or dropped for a
// plug-in that cannot be loaded. A missing catalogue means no wizards are
// installed; one that cannot be read or parsed also yields none, and
// errorString() says why. Entries without a Name or a ProgID are skipped and
// named in errorString().
class WizardCatalogue
{
public:
    WizardCatalogue() = default;
    explicit WizardCatalogue(const QString& catalogueFile);

    const WizardCollection& Wizards() const { return m_wizards; }
    QString errorString() const { return m_error; }

    // The catalogue's file in a suite data folder.
    static QString FileIn(const QString& suiteDataFolder);

private:
    void read(const QByteArray& content, const QString& shownName);

    WizardCollection m_wizards;
    QString m_error;
};

} // namespace nebra
