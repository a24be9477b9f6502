#pragma once

#include "foundation/Task.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

class AuthService;

/// The sign-in form. Main thread.
class LoginState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString email READ email WRITE setEmail NOTIFY emailChanged)
    Q_PROPERTY(QString password READ password WRITE setPassword NOTIFY passwordChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool isFilled READ isFilled NOTIFY isFilledChanged)

public:
    explicit LoginState(QObject *parent = nullptr);

    [[nodiscard]] const QString &email() const { return m_email; }
    void setEmail(const QString &email);
    [[nodiscard]] const QString &password() const { return m_password; }
    void setPassword(const QString &password);
    /// Empty while there is nothing to tell.
    [[nodiscard]] const QString &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] bool isLoading() const;
    /// Both fields hold something; what, is the service's business.
    [[nodiscard]] bool isFilled() const { return !m_email.isEmpty() && !m_password.isEmpty(); }

    /// Starts `doLogin`.
    Q_INVOKABLE void signIn();

    /// Signs in with the fields as they are. Never throws: a failure is told in `errorMessage`, and the
    /// fields keep their contents. On success the root view takes this screen away.
    Task<> doLogin();

Q_SIGNALS:
    void emailChanged();
    void passwordChanged();
    void errorMessageChanged();
    void isLoadingChanged();
    void isFilledChanged();

private:
    void setErrorMessage(const QString &message);

    AuthService &m_auth;
    QString m_email;
    QString m_password;
    QString m_errorMessage;
};

} // namespace talvenor
