#pragma once

#include <QString>

#include <memory>

class QHelpEngine;

namespace nebra {

// Opens the compiled user guide for the help window.
//
// The installed collection usually lies in a folder the user cannot write,
// while the full-text search keeps its index beside the collection. So the
// collection and its documentation are copied once into the user's cache
// folder (again when the installed ones change) and opened there; when that
// copy cannot be made, the installed file is opened read-only.
class HelpCollection
{
public:
    // The engine over the collection, its data set up; null with error set
    // (a sentence naming the file) when the file is missing or is no usable
    // help collection.
    static std::unique_ptr<QHelpEngine> open(const QString& collectionFile, QString& error);

    // The folder the working copies go to.
    static QString cacheFolder();

private:
    enum class Copy
    {
        Current,
        Made,
        Failed
    };
    static QString workingCopy(const QString& collectionFile);
    static Copy copyIfChanged(const QString& source, const QString& target);
    static bool writeFile(const QString& path, const QByteArray& content);
};

} // namespace nebra
