#pragma once

#include <QObject>
#include <QVariantMap>

namespace nebra {

// The state that wizards keep between runs: one object for the whole
// process, created on first use and handed to every run. Wizards store
// values under keys of their own choosing; keys beginning with "run/" hold
// scratch values of one run only.
//
// After each run the Organiser sends Request(EndOfRun): the state drops the
// "run/" values and counts the run, so that the next run starts clean while
// what a wizard chose to remember (the last layout used, say) stays.
class SharedWizardState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int RunCount READ RunCount)
public:
    // The request code sent after every run.
    static constexpr int EndOfRun = 1048;

    explicit SharedWizardState(QObject* parent = nullptr);

    Q_INVOKABLE QVariant Value(const QString& key) const { return m_values.value(key); }
    Q_INVOKABLE void SetValue(const QString& key, const QVariant& value);
    // Carries out a request; returns false for a code it does not know.
    Q_INVOKABLE bool Request(int code);

    int RunCount() const { return m_runCount; }
    QStringList keys() const { return m_values.keys(); }

private:
    QVariantMap m_values;
    int m_runCount = 0;
};

} // namespace nebra
