#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>
#include <QTabBar>
#include <QTest>
#include <QTextEdit>

namespace nebra::test {

// A name a screen reader should not read out: a single word in the program's
// own spelling ("chkShortcuts", "OKButton", "frm_Options") rather than a caption.
inline bool looksLikeCodeName(const QString& name)
{
    static const QRegularExpression code(QStringLiteral("^\\S*([a-z][A-Z]|[A-Z]{2}[a-z]|_)\\S*$"));
    return code.match(name).hasMatch();
}

// Every control of window that a user reaches with the keyboard (buttons,
// boxes, lists, editors, tab bars, and the custom controls given) has an
// accessible name that is not a code name, and so has the window itself: a
// screen reader has something to say for each. The line
// editors inside spin and combo boxes speak for their boxes. Walks the
// children, so a control added later is checked too; at least atLeast must be
// found, so that a window built differently does not pass by checking nothing.
inline void verifyAccessibleNames(const QWidget& window, int atLeast,
                                  const QList<const QWidget*>& custom = {})
{
    QStringList unnamed;
    int checked = 0;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const QWidget* parent = widget->parentWidget();
        const bool inner =
            qobject_cast<const QAbstractSpinBox*>(parent) || qobject_cast<const QComboBox*>(parent);
        const bool control =
            custom.contains(widget) || qobject_cast<const QAbstractButton*>(widget) ||
            qobject_cast<const QComboBox*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget) ||
            qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QTextEdit*>(widget) ||
            qobject_cast<const QAbstractSlider*>(widget) || qobject_cast<const QTabBar*>(widget) ||
            (qobject_cast<const QLineEdit*>(widget) && !inner);
        if (!control || !widget->isVisibleTo(&window) || widget->focusPolicy() == Qt::NoFocus)
            continue;
        ++checked;
        if (widget->accessibleName().isEmpty() || looksLikeCodeName(widget->accessibleName()))
            unnamed
                << QStringLiteral("%1 \"%2\"").arg(widget->metaObject()->className(), widget->objectName());
    }
    if (looksLikeCodeName(window.accessibleName()))
        unnamed << QStringLiteral("the window \"%1\"").arg(window.accessibleName());
    QVERIFY2(unnamed.isEmpty(),
             qPrintable(QStringLiteral("no accessible name or a code name: ") + unnamed.join(", ")));
    QVERIFY2(checked >= atLeast, qPrintable(QStringLiteral("only %1 controls found").arg(checked)));
}

} // namespace nebra::test
