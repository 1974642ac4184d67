#include "ElisaWizard.h"

#include "ProtocolFiles.h"

#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace nebra {

namespace {

// The page is complete when the name can be a new file and a layout is chosen.
class ElisaPage : public QWizardPage
{
public:
    std::function<bool()> complete;
    bool isComplete() const override { return complete && complete(); }
    void changed() { Q_EMIT completeChanged(); }
};

template <typename Control>
Control* named(Control* control, const char* objectName, const QString& accessibleName)
{
    control->setObjectName(QLatin1String(objectName));
    control->setAccessibleName(accessibleName);
    return control;
}

} // namespace

ElisaWizard::ElisaWizard(AssayProtocol templateProtocol, QString protocolsFolder,
                         const QString& layoutsFolder, QWidget* parent)
    : QWizard(parent), m_template(std::move(templateProtocol)), m_protocolsFolder(std::move(protocolsFolder))
{
    setObjectName(QStringLiteral("frmElisaWizard"));
    setWindowTitle(caption());
    setAccessibleName(caption());
    setWizardStyle(QWizard::ClassicStyle);
    addPage(buildPage(layoutsFolder));
}

QWizardPage* ElisaWizard::buildPage(const QString& layoutsFolder)
{
    auto* page = new ElisaPage;
    page->setTitle(QStringLiteral("ELISA protocol"));
    page->setSubTitle(QStringLiteral("Read: %1. Analysis: %2.").arg(m_template.read, m_template.analysis));
    page->setAccessibleName(page->title());
    m_name = named(new QLineEdit, "txtProtocolName", QStringLiteral("Protocol name"));
    m_layout = named(new QComboBox, "cboLayout", QStringLiteral("Plate layout"));
    m_layout->addItems(QDir(layoutsFolder).entryList({QStringLiteral("*.mlo")}, QDir::Files, QDir::Name));
    m_layout->setCurrentText(m_template.layout);
    m_units = named(new QComboBox, "cboUnits", QStringLiteral("Units"));
    m_units->setEditable(true);
    m_units->addItems(
        {QStringLiteral("ug/mL"), QStringLiteral("ng/mL"), QStringLiteral("pg/mL"), QStringLiteral("IU/mL")});
    m_units->setCurrentText(m_template.units);
    m_problem = named(new QLabel, "lblProblem", QStringLiteral("Problem"));
    m_problem->setWordWrap(true);
    auto* form = new QFormLayout(page);
    form->addRow(QStringLiteral("&Name:"), m_name);
    form->addRow(QStringLiteral("Plate &layout:"), m_layout);
    form->addRow(QStringLiteral("&Units:"), m_units);
    form->addRow(m_problem);
    page->complete = [this] {
        return ProtocolFiles::CheckName(m_protocolsFolder, m_name->text()).isEmpty() &&
               !m_layout->currentText().isEmpty() && !m_units->currentText().trimmed().isEmpty();
    };
    connect(m_name, &QLineEdit::textChanged, page, [this, page] {
        m_problem->setText(m_name->text().isEmpty()
                               ? QString()
                               : ProtocolFiles::CheckName(m_protocolsFolder, m_name->text()));
        page->changed();
    });
    connect(m_units, &QComboBox::currentTextChanged, page, &ElisaPage::changed);
    return page;
}

AssayProtocol ElisaWizard::protocol() const
{
    AssayProtocol protocol = m_template;
    protocol.name = m_name->text();
    protocol.layout = m_layout->currentText();
    protocol.units = m_units->currentText().trimmed();
    return protocol;
}

void ElisaWizard::accept()
{
    QString error;
    const QString path = ProtocolFiles::Save(m_protocolsFolder, protocol(), error);
    if (path.isEmpty()) {
        m_problem->setText(QStringLiteral("The protocol was not saved. ") + error);
        return;
    }
    m_newFileName = path;
    QWizard::accept();
}

} // namespace nebra
