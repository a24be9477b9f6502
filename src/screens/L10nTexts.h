#pragma once

#include "settings/AppLanguage.h"
#include "settings/L10nTable.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// The shared texts as QML reads them, in the language of the application and changing with it. Main thread.
class L10nTexts : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(L10n)
    QML_SINGLETON
    Q_PROPERTY(bool isGerman READ isGerman NOTIFY changed)
    Q_PROPERTY(QString current READ currentForm WRITE setCurrent NOTIFY changed)
    Q_PROPERTY(QStringList allForms READ allForms CONSTANT)
    Q_PROPERTY(QString noTranscriptHint READ noTranscriptHint NOTIFY changed)
    Q_PROPERTY(QString noSummaryHint READ noSummaryHint NOTIFY changed)

#define TALVENOR_TEXT_PROPERTY(name, english, german) Q_PROPERTY(QString name READ name NOTIFY changed)
    TALVENOR_L10N_TABLE(TALVENOR_TEXT_PROPERTY)
#undef TALVENOR_TEXT_PROPERTY

public:
    explicit L10nTexts(QObject *parent = nullptr);

    [[nodiscard]] bool isGerman() const;
    /// The string form of the language that is set. Setting an unknown one changes nothing.
    [[nodiscard]] QString currentForm() const;
    void setCurrent(const QString &form);
    /// The string forms of all languages in the order in which they are offered.
    [[nodiscard]] QStringList allForms() const;
    /// The short mark of a language, such as "EN".
    Q_INVOKABLE QString flag(const QString &form) const;
    /// A language's name in itself.
    Q_INVOKABLE QString displayName(const QString &form) const;

    [[nodiscard]] QString noTranscriptHint() const;
    [[nodiscard]] QString noSummaryHint() const;
#define TALVENOR_TEXT_READER(name, english, german) [[nodiscard]] QString name() const;
    TALVENOR_L10N_TABLE(TALVENOR_TEXT_READER)
#undef TALVENOR_TEXT_READER

Q_SIGNALS:
    /// The language has changed, and all texts with it.
    void changed();

private:
    AppLanguage m_current;
};

} // namespace talvenor
