#pragma once

#include <QString>
#include <QStringList>

namespace nebra {

// Splits SQL text into its statements at the semicolons that end them,
// leaving alone those inside quoted strings and names, dollar-quoted bodies
// ($$ ... $$, $tag$ ... $tag$) and comments. The database driver runs one
// statement per call and would not report an error in a second one.
class SqlScript
{
public:
    static QStringList statements(const QString& script);
};

} // namespace nebra
