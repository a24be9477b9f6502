#include "settings/AppLanguage.h"

#include "foundation/ProgrammingError.h"

#include <array>

namespace talvenor {

namespace {

struct Row
{
    AppLanguage language;
    QStringView form;
    QStringView name;
    QStringView flag;
};

constexpr std::array rows{
    Row{AppLanguage::german, u"de", u"Deutsch", u"DE"},
    Row{AppLanguage::english, u"en", u"English", u"EN"},
};

const Row &rowOf(AppLanguage language)
{
    for (const Row &row : rows) {
        if (row.language == language)
            return row;
    }
    programmingError(QStringLiteral("an application language outside its enumeration"));
}

} // namespace

const QList<AppLanguage> &allAppLanguages()
{
    static const QList<AppLanguage> all = [] {
        QList<AppLanguage> list;
        for (const Row &row : rows)
            list.append(row.language);
        return list;
    }();
    return all;
}

QString stringForm(AppLanguage language)
{
    return rowOf(language).form.toString();
}

std::optional<AppLanguage> appLanguageFromString(const QString &text)
{
    for (const Row &row : rows) {
        if (row.form == text)
            return row.language;
    }
    return std::nullopt;
}

QString displayName(AppLanguage language)
{
    return rowOf(language).name.toString();
}

QString flag(AppLanguage language)
{
    return rowOf(language).flag.toString();
}

} // namespace talvenor
