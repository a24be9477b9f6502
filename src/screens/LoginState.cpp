#include "screens/LoginState.h"

#include "foundation/LocalizedError.h"
#include "service/AuthService.h"

namespace talvenor {

LoginState::LoginState(QObject *parent) : QObject(parent), m_auth(AuthService::shared())
{
    connect(&m_auth, &AuthService::isLoadingChanged, this, &LoginState::isLoadingChanged);
    connect(this, &LoginState::emailChanged, this, &LoginState::isFilledChanged);
    connect(this, &LoginState::passwordChanged, this, &LoginState::isFilledChanged);
}

bool LoginState::isLoading() const
{
    return m_auth.isLoading();
}

void LoginState::setEmail(const QString &email)
{
    if (m_email == email)
        return;
    m_email = email;
    Q_EMIT emailChanged();
}

void LoginState::setPassword(const QString &password)
{
    if (m_password == password)
        return;
    m_password = password;
    Q_EMIT passwordChanged();
}

void LoginState::setErrorMessage(const QString &message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = message;
    Q_EMIT errorMessageChanged();
}

void LoginState::signIn()
{
    startTask(this, [this] { return doLogin(); });
}

Task<> LoginState::doLogin()
{
    const QPointer<LoginState> self(this);
    setErrorMessage({});
    std::exception_ptr failure;
    try {
        co_await m_auth.login(m_email, m_password);
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure && self)
        setErrorMessage(localizedDescription(failure));
}

} // namespace talvenor
