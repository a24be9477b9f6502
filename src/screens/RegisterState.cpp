#include "screens/RegisterState.h"

#include "foundation/LocalizedError.h"
#include "service/AuthService.h"
#include "settings/L10n.h"

#include <QTextBoundaryFinder>

namespace talvenor {

namespace {

constexpr int kShortestPassword = 6;

/// True if a person would count that many characters in the text, or more.
bool hasCharacters(const QString &text, int wanted)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int count = 0;
    while (count < wanted && finder.toNextBoundary() != -1)
        ++count;
    return count >= wanted;
}

} // namespace

RegisterState::RegisterState(QObject *parent) : QObject(parent), m_auth(AuthService::shared())
{
    connect(&m_auth, &AuthService::isLoadingChanged, this, &RegisterState::isLoadingChanged);
}

bool RegisterState::isLoading() const
{
    return m_auth.isLoading();
}

bool RegisterState::isFormValid() const
{
    return !m_name.isEmpty() && !m_email.isEmpty() && hasCharacters(m_password, kShortestPassword) &&
           m_password == m_confirmPassword;
}

void RegisterState::setErrorMessage(const QString &message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = message;
    Q_EMIT errorMessageChanged();
}

void RegisterState::signUp()
{
    startTask(this, [this] { return doRegister(); });
}

Task<> RegisterState::doRegister()
{
    const QPointer<RegisterState> self(this);
    setErrorMessage({});
    if (m_password != m_confirmPassword) {
        setErrorMessage(L10n::isGerman() ? QStringLiteral("Passwörter stimmen nicht überein")
                                         : QStringLiteral("Passwords do not match"));
        co_return;
    }
    std::exception_ptr failure;
    try {
        co_await m_auth.register_(m_email, m_password, m_name);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!self)
        co_return; // the root view has already switched, and this sheet went with the screen below it
    if (failure)
        setErrorMessage(localizedDescription(failure));
    else
        Q_EMIT dismiss();
}

} // namespace talvenor
