#pragma once

#include "Messages.h"

#include <QList>
#include <QQueue>

#include <functional>

namespace nebra::test {

// Answers every message box of the code under test and records what it was
// asked: text, title, icon and buttons. Answers are taken from the queue in
// order; with the queue empty the box's default button (or Ok) answers.
class MessageRecorder
{
public:
    MessageRecorder()
    {
        m_previous = Messages::setHandler([this](const MessageRequest& request) {
            m_requests.append(request);
            if (m_whileShown)
                m_whileShown(request);
            if (!m_answers.isEmpty())
                return m_answers.dequeue();
            return request.defaultButton != MessageButton::NoButton ? request.defaultButton
                                                                    : int(MessageButton::Ok);
        });
    }
    ~MessageRecorder() { Messages::setHandler(std::move(m_previous)); }
    MessageRecorder(const MessageRecorder&) = delete;
    MessageRecorder& operator=(const MessageRecorder&) = delete;

    void answer(int button) { m_answers.enqueue(button); }
    // Runs while each box is up, before it is answered.
    void whileShown(std::function<void(const MessageRequest&)> act) { m_whileShown = std::move(act); }
    const QList<MessageRequest>& requests() const { return m_requests; }
    int count() const { return int(m_requests.size()); }
    const MessageRequest& last() const { return m_requests.last(); }
    void clear() { m_requests.clear(); }

private:
    Messages::Handler m_previous;
    QList<MessageRequest> m_requests;
    QQueue<int> m_answers;
    std::function<void(const MessageRequest&)> m_whileShown;
};

} // namespace nebra::test
