#include "PasswordPrompt.h"

#include <csignal>
#include <sodium.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>

namespace nebra {

namespace {

// The terminal settings to put back when a signal ends the program while
// echo is off; written before the handlers are installed.
termios savedTerminal{};
volatile sig_atomic_t terminalSaved = 0;

extern "C" void restoreEchoAndDie(int signal)
{
    if (terminalSaved)
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &savedTerminal);
    // Die of the same signal, with its default action, so the caller sees why.
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

// Restores the terminal's echo however the reading ends: returning, or
// Ctrl-C, Ctrl-\, a hang-up or a kill.
class EchoOff
{
public:
    EchoOff()
    {
        m_active = tcgetattr(STDIN_FILENO, &m_saved) == 0;
        if (!m_active)
            return;
        savedTerminal = m_saved;
        terminalSaved = 1;
        struct sigaction action = {};
        action.sa_handler = restoreEchoAndDie;
        sigemptyset(&action.sa_mask);
        for (int i = 0; i < SignalCount; ++i)
            sigaction(Signals[i], &action, &m_previous[i]);
        termios quiet = m_saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        quiet.c_lflag |= ECHONL;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~EchoOff()
    {
        if (!m_active)
            return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_saved);
        for (int i = 0; i < SignalCount; ++i)
            sigaction(Signals[i], &m_previous[i], nullptr);
        terminalSaved = 0;
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

private:
    static constexpr int SignalCount = 4;
    static constexpr int Signals[SignalCount] = {SIGINT, SIGQUIT, SIGTERM, SIGHUP};
    termios m_saved{};
    struct sigaction m_previous[SignalCount] = {};
    bool m_active = false;
};

constexpr qsizetype MaximumLineLength = 4096;

} // namespace

std::optional<SecretBytes> PasswordPrompt::readLine(bool echoOff, QString* error)
{
    std::optional<EchoOff> quiet;
    if (echoOff)
        quiet.emplace();
    // Read byte by byte, unbuffered, so that nothing after the line is consumed.
    QByteArray line;
    line.reserve(MaximumLineLength + 1); // no reallocation leaves a copy behind
    char c = 0;
    bool sawAnything = false;
    while (read(STDIN_FILENO, &c, 1) == 1) {
        sawAnything = true;
        if (c == '\n')
            break;
        if (line.size() >= MaximumLineLength) {
            sodium_memzero(line.data(), size_t(line.size()));
            *error = QStringLiteral("The password is too long.");
            return std::nullopt;
        }
        line.append(c);
    }
    if (line.endsWith('\r'))
        line.chop(1);
    if (!sawAnything) {
        *error = QStringLiteral("No password was given on standard input.");
        return std::nullopt;
    }
    SecretBytes secret(line);
    sodium_memzero(line.data(), size_t(line.size()));
    return secret;
}

std::optional<SecretBytes> PasswordPrompt::readNewPassword(const QString& userName, QString* error)
{
    if (!isatty(STDIN_FILENO))
        return readLine(false, error);
    std::fprintf(stderr, "New password for %s: ", qPrintable(userName));
    std::fflush(stderr);
    std::optional<SecretBytes> first = readLine(true, error);
    if (!first)
        return std::nullopt;
    std::fputs("Repeat the new password: ", stderr);
    std::fflush(stderr);
    const std::optional<SecretBytes> second = readLine(true, error);
    if (!second)
        return std::nullopt;
    if (!(*first == *second)) {
        *error = QStringLiteral("The two passwords differ; nothing has been changed.");
        return std::nullopt;
    }
    return first;
}

} // namespace nebra
