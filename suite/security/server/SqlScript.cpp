#include "SqlScript.h"

#include <QRegularExpression>

namespace nebra {

namespace {

// Where the quoted part that starts at i ends (just after its closing mark),
// or i when nothing quoted starts there.
qsizetype skipQuoted(const QString& s, qsizetype i)
{
    const QChar c = s.at(i);
    if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
        // A doubled quote inside is the quote itself, which this also skips.
        const qsizetype end = s.indexOf(c, i + 1);
        return end < 0 ? s.size() : end + 1;
    }
    if (c == QLatin1Char('-') && s.mid(i, 2) == QLatin1String("--")) {
        const qsizetype end = s.indexOf(QLatin1Char('\n'), i);
        return end < 0 ? s.size() : end + 1;
    }
    if (c == QLatin1Char('/') && s.mid(i, 2) == QLatin1String("/*")) {
        const qsizetype end = s.indexOf(QLatin1String("*/"), i + 2);
        return end < 0 ? s.size() : end + 2;
    }
    if (c == QLatin1Char('$')) {
        static const QRegularExpression tag(QStringLiteral("\\$[A-Za-z_]*\\$"));
        const QRegularExpressionMatch m =
            tag.match(s, i, QRegularExpression::NormalMatch, QRegularExpression::AnchorAtOffsetMatchOption);
        if (m.hasMatch()) {
            const qsizetype end = s.indexOf(m.captured(0), i + m.capturedLength(0));
            return end < 0 ? s.size() : end + m.capturedLength(0);
        }
    }
    return i;
}

} // namespace

QStringList SqlScript::statements(const QString& script)
{
    QStringList list;
    qsizetype start = 0;
    qsizetype i = 0;
    while (i < script.size()) {
        const qsizetype after = skipQuoted(script, i);
        if (after != i) {
            i = after;
            continue;
        }
        if (script.at(i) == QLatin1Char(';')) {
            list.append(script.mid(start, i - start).trimmed());
            start = i + 1;
        }
        ++i;
    }
    list.append(script.mid(start).trimmed());
    // Drop what holds no statement (empty, or comments only).
    static const QRegularExpression onlyComments(QStringLiteral("^(\\s|--[^\\n]*(\\n|$))*$"));
    list.removeIf([](const QString& s) { return onlyComments.match(s).hasMatch(); });
    return list;
}

} // namespace nebra
