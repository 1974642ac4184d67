#pragma once

#include "SecretBytes.h"

#include <QString>

#include <optional>

namespace nebra {

// Reads a new password for the administration tool, never from the command
// line: from the terminal with echo off (asked twice, both must agree) when
// standard input is a terminal, otherwise as one line of standard input
// (without its line end), so that scripts can pipe it in.
class PasswordPrompt
{
public:
    static std::optional<SecretBytes> readNewPassword(const QString& userName, QString* error);

private:
    static std::optional<SecretBytes> readLine(bool echoOff, QString* error);
};

} // namespace nebra
