#include "SignatureBand.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

namespace nebra {

SignatureBand::SignatureBand(QWidget* parent) : QWidget(parent), m_lines(new QVBoxLayout(this))
{
    setObjectName(QStringLiteral("signatureBand"));
    setAccessibleName(QStringLiteral("Signatures"));
    m_lines->setContentsMargins(0, 0, 0, 0);
    setVisible(false);
}

void SignatureBand::showSignatures(const QList<DocumentState::Signature>& signatures)
{
    while (QLayoutItem* item = m_lines->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const int iconSize = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    for (const DocumentState::Signature& signature : signatures) {
        auto* line = new QWidget(this);
        auto* row = new QHBoxLayout(line);
        row->setContentsMargins(0, 0, 0, 0);
        if (!signature.valid) {
            auto* icon = new QLabel(line);
            icon->setObjectName(QStringLiteral("warning"));
            icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(iconSize));
            icon->setAccessibleName(QStringLiteral("Warning"));
            row->addWidget(icon);
        }
        auto* text = new QLabel(lineText(signature), line);
        text->setObjectName(QStringLiteral("signature"));
        text->setAccessibleName(text->text());
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
        row->addWidget(text, 1);
        m_lines->addWidget(line);
    }
    setVisible(!signatures.isEmpty());
}

QStringList SignatureBand::lines() const
{
    QStringList texts;
    for (const QLabel* label : findChildren<QLabel*>(QStringLiteral("signature")))
        texts.append(label->text());
    return texts;
}

QString SignatureBand::lineText(const DocumentState::Signature& signature)
{
    if (signature.valid)
        return SignatureEntries::caption(signature.signature);
    const QString reason = signature.signature.intact
                               ? DocumentState::voidText()
                               : QStringLiteral("Signature void: its record was altered outside the suite");
    return QStringLiteral("%1 (%2)").arg(reason, SignatureEntries::caption(signature.signature));
}

} // namespace nebra
