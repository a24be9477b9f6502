#include "screens/ContentState.h"

#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "settings/L10n.h"

namespace talvenor {

ContentState::ContentState(QObject *parent)
    : QObject(parent), m_auth(AuthService::shared()), m_record(m_viewModel), m_recordings(m_viewModel),
      m_selected(m_viewModel)
{
    connect(&m_auth, &AuthService::isLoggedInChanged, this, &ContentState::isLoggedInChanged);
    connect(&m_auth, &AuthService::isLoggedInChanged, this, &ContentState::updateSetup);
    connect(&m_auth, &AuthService::currentUserChanged, this, &ContentState::currentUserChanged);
    connect(&AppSettings::shared(), &AppSettings::changed, this, &ContentState::updateSetup);
    connect(&m_viewModel, &RecorderViewModel::selectedRecordingChanged, this,
            &ContentState::hasSelectionChanged);
    connect(&m_viewModel, &RecorderViewModel::showErrorChanged, this, &ContentState::showErrorChanged);
    connect(&m_viewModel, &RecorderViewModel::errorMessageChanged, this, &ContentState::errorMessageChanged);
    connect(&AppSettings::shared(), &AppSettings::changed, this, &ContentState::errorMessageChanged);
    updateSetup();
}

bool ContentState::isLoggedIn() const
{
    return m_auth.isLoggedIn();
}

void ContentState::setSetupPresented(bool presented)
{
    if (!presented)
        AppSettings::shared().setHasCompletedSetup(true);
}

void ContentState::updateSetup()
{
    const bool presented = m_auth.isLoggedIn() && !AppSettings::shared().hasCompletedSetup();
    if (presented == m_isSetupPresented)
        return;
    m_isSetupPresented = presented;
    Q_EMIT isSetupPresentedChanged();
}

QVariant ContentState::currentUser() const
{
    const std::optional<UserProfile> &user = m_auth.currentUser();
    return user ? QVariant::fromValue(*user) : QVariant();
}

bool ContentState::isAdmin() const
{
    return m_auth.isAdmin();
}

QString ContentState::subscriptionTier() const
{
    return m_auth.subscriptionTier();
}

QString ContentState::errorMessage() const
{
    return m_viewModel.errorMessage().value_or(L10n::unknownError());
}

void ContentState::dismissError()
{
    // A second time while the alert goes would go round in a circle.
    if (m_viewModel.showError())
        m_viewModel.setShowError(false);
}

void ContentState::signOut()
{
    m_auth.logout();
}

} // namespace talvenor
