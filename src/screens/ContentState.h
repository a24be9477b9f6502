#pragma once

#include "recorder/RecorderViewModel.h"
#include "screens/RecordState.h"
#include "screens/RecordingListModel.h"
#include "screens/SelectedRecording.h"

#include <QVariant>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

class AuthService;

/// What the root view decides by, and the one view model with the parts of it that the screens show.
///
/// Made once; the view model survives signing out and in. Main thread.
class ContentState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    Q_PROPERTY(bool isLoggedIn READ isLoggedIn NOTIFY isLoggedInChanged)
    Q_PROPERTY(
        bool isSetupPresented READ isSetupPresented WRITE setSetupPresented NOTIFY isSetupPresentedChanged)
    /// A UserProfile, or undefined while none is known.
    Q_PROPERTY(QVariant currentUser READ currentUser NOTIFY currentUserChanged)
    Q_PROPERTY(bool isAdmin READ isAdmin NOTIFY currentUserChanged)
    Q_PROPERTY(QString subscriptionTier READ subscriptionTier NOTIFY currentUserChanged)
    Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY hasSelectionChanged)
    Q_PROPERTY(bool showError READ showError NOTIFY showErrorChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(talvenor::RecordState *record READ record CONSTANT)
    Q_PROPERTY(talvenor::RecordingListModel *recordings READ recordings CONSTANT)
    Q_PROPERTY(talvenor::SelectedRecording *selected READ selected CONSTANT)

public:
    explicit ContentState(QObject *parent = nullptr);

    [[nodiscard]] bool isLoggedIn() const;
    /// The set-up sheet is up: exactly while somebody is signed in who has not been through it.
    [[nodiscard]] bool isSetupPresented() const { return m_isSetupPresented; }
    /// False counts as having completed the set-up; true does nothing.
    void setSetupPresented(bool presented);
    /// The profile of whoever is signed in; invalid while it has not come.
    [[nodiscard]] QVariant currentUser() const;
    [[nodiscard]] bool isAdmin() const;
    /// The user's plan, "free" while no user is known.
    [[nodiscard]] QString subscriptionTier() const;
    [[nodiscard]] bool hasSelection() const { return m_viewModel.hasSelection(); }
    /// The alert is up.
    [[nodiscard]] bool showError() const { return m_viewModel.showError(); }
    /// The alert's text; never empty of meaning: without a message it says that the error is unknown.
    [[nodiscard]] QString errorMessage() const;
    [[nodiscard]] RecordState *record() { return &m_record; }
    [[nodiscard]] RecordingListModel *recordings() { return &m_recordings; }
    [[nodiscard]] SelectedRecording *selected() { return &m_selected; }

    /// The program's one view model.
    [[nodiscard]] RecorderViewModel &viewModel() { return m_viewModel; }

    Q_INVOKABLE void dismissError();
    /// Ends the session on this machine; a running recording goes on.
    Q_INVOKABLE void signOut();

Q_SIGNALS:
    void isLoggedInChanged();
    void isSetupPresentedChanged();
    void currentUserChanged();
    void hasSelectionChanged();
    void showErrorChanged();
    void errorMessageChanged();

private:
    void updateSetup();

    AuthService &m_auth;
    bool m_isSetupPresented = false;
    RecorderViewModel m_viewModel;
    RecordState m_record;
    RecordingListModel m_recordings;
    SelectedRecording m_selected;
};

} // namespace talvenor
