#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

namespace nebra {

class FolderReaders;

// Runs one piece of work on the reader thread of a folder's mount
// (FolderReaders) and runs the event loop until it has answered or the bound
// has passed, for a caller that needs the answer to go on (a dialog's OK)
// and must not freeze while a file server does not answer: meanwhile the
// windows repaint and answer, and the caller keeps itself from being started
// again. Work that has not answered in time goes on alone; its answer is
// dropped. Reads of one object run one at a time, in order.
class BoundedRead
{
public:
    static constexpr int DefaultWaitMs = 5000;

    explicit BoundedRead(int waitMs = DefaultWaitMs);
    ~BoundedRead();
    BoundedRead(const BoundedRead&) = delete;
    BoundedRead& operator=(const BoundedRead&) = delete;

    // work() on the reader of folder's mount; nothing when it did not answer
    // in time. work gets its inputs by value and touches nothing another
    // thread uses.
    template <typename Work> std::optional<std::invoke_result_t<Work&>> run(const QString& folder, Work work)
    {
        auto answer = std::make_shared<std::optional<std::invoke_result_t<Work&>>>();
        if (!wait(folder, [answer, work]() mutable { answer->emplace(work()); }))
            return std::nullopt;
        return std::move(*answer);
    }

private:
    bool wait(const QString& folder, std::function<void()> work);

    std::unique_ptr<FolderReaders> m_readers;
    int m_waitMs;
};

} // namespace nebra
