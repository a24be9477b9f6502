#pragma once

#include "foundation/Task.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

class AuthService;

/// The registration form. Main thread.
class RegisterState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY fieldsChanged)
    Q_PROPERTY(QString email MEMBER m_email NOTIFY fieldsChanged)
    Q_PROPERTY(QString password MEMBER m_password NOTIFY fieldsChanged)
    Q_PROPERTY(QString confirmPassword MEMBER m_confirmPassword NOTIFY fieldsChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool isFormValid READ isFormValid NOTIFY fieldsChanged)

public:
    explicit RegisterState(QObject *parent = nullptr);

    /// Empty while there is nothing to tell.
    [[nodiscard]] const QString &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] bool isLoading() const;
    /// A name, an address, and twice the same password of at least 6 user-perceived characters. Nothing is
    /// trimmed, and the form of the address is not looked at.
    [[nodiscard]] bool isFormValid() const;

    /// Starts `doRegister`.
    Q_INVOKABLE void signUp();

    /// Creates the account and signs in with it. Never throws: a failure is told in `errorMessage`. On
    /// success `dismiss` is sent.
    Task<> doRegister();

Q_SIGNALS:
    void fieldsChanged();
    void errorMessageChanged();
    void isLoadingChanged();
    /// The sheet has done its work.
    void dismiss();

private:
    void setErrorMessage(const QString &message);

    AuthService &m_auth;
    QString m_name;
    QString m_email;
    QString m_password;
    QString m_confirmPassword;
    QString m_errorMessage;
};

} // namespace talvenor
