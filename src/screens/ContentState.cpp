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
    connect(&m_viewModel, &RecorderViewModel::selectedRecordingChanged, this,
            &ContentState::hasSelectionChanged);
    connect(&m_viewModel, &RecorderViewModel::showErrorChanged, this, &ContentState::showErrorChanged);
    connect(&m_viewModel, &RecorderViewModel::errorMessageChanged, this, &ContentState::errorMessageChanged);
    connect(&AppSettings::shared(), &AppSettings::changed, this, &ContentState::errorMessageChanged);
}

bool ContentState::isLoggedIn() const
{
    return m_auth.isLoggedIn();
}

QString ContentState::errorMessage() const
{
    return m_viewModel.errorMessage().value_or(L10n::unknownError());
}

void ContentState::dismissError()
{
    m_viewModel.setShowError(false);
}

void ContentState::signOut()
{
    m_auth.logout();
}

} // namespace talvenor
