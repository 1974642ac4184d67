#include "DataFolderProbe.h"

#include "FolderReaders.h"

#include <QDir>
#include <QEventLoop>
#include <QTimer>

namespace nebra {

DataFolderProbe::DataFolderProbe(QObject* parent) : QObject(parent), m_readers(new FolderReaders(this)) {}

bool DataFolderProbe::waitFor(const QString& folder, int waitMs)
{
    // Whether the folder could be made matters not here: making the data
    // folders reports nothing either. What matters is that the server answered.
    return run(
        folder, [folder] { QDir().mkpath(folder); }, waitMs);
}

bool DataFolderProbe::run(const QString& folder, std::function<void()> work, int waitMs)
{
    m_answered = false;
    QEventLoop loop;
    m_loop = &loop;
    m_readers->read(
        folder, FolderReaders::Lane::User, this,
        [work = std::move(work)] {
            work();
            return true;
        },
        [this](bool) {
            m_answered = true;
            if (m_loop)
                m_loop->quit();
            else
                Q_EMIT answeredLate();
        });
    QTimer::singleShot(waitMs, &loop, &QEventLoop::quit);
    if (!m_answered)
        loop.exec();
    m_loop = nullptr;
    return m_answered;
}

QString DataFolderProbe::notAnsweringText(const QString& folder)
{
    return tr("The data folders in %1 do not answer. The Organiser shows them as soon as the server answers.")
        .arg(QDir::toNativeSeparators(folder));
}

} // namespace nebra
