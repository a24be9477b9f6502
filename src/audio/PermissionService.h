#pragma once

#include "foundation/Task.h"

#include <QObject>

namespace talvenor {

/// Asks the system, once at start, whether the recorder may use what it needs, and keeps the answers.
///
/// The flags are a report and not a gate: what a refusal does to a recording is settled where the system
/// refuses. Main thread.
class PermissionService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool microphoneGranted READ microphoneGranted NOTIFY microphoneGrantedChanged)
    Q_PROPERTY(bool speechGranted READ speechGranted NOTIFY speechGrantedChanged)
    Q_PROPERTY(bool screenCaptureGranted READ screenCaptureGranted NOTIFY screenCaptureGrantedChanged)
    Q_PROPERTY(bool allPermissionsChecked READ allPermissionsChecked NOTIFY allPermissionsCheckedChanged)

public:
    /// The one instance of the process.
    [[nodiscard]] static PermissionService &shared();

    /// The microphone may be used.
    [[nodiscard]] bool microphoneGranted() const { return m_microphoneGranted; }
    /// Speech recognition may be used.
    [[nodiscard]] bool speechGranted() const { return m_speechGranted; }
    /// The last query for what can be listened to has succeeded.
    [[nodiscard]] bool screenCaptureGranted() const { return m_screenCaptureGranted; }
    /// `requestAllPermissions` has finished; never goes back to false.
    [[nodiscard]] bool allPermissionsChecked() const { return m_allPermissionsChecked; }

    /// Deals with the microphone, then with speech recognition; asks the user where that is still open. Never
    /// fails: a refusal is a false flag. `allPermissionsChecked` may be true a moment before `speechGranted`.
    Task<> requestAllPermissions();

    /// Finds out by trying whether system audio can be captured. Never fails.
    Task<> checkScreenCapture();

Q_SIGNALS:
    void microphoneGrantedChanged();
    void speechGrantedChanged();
    void screenCaptureGrantedChanged();
    void allPermissionsCheckedChanged();

private:
    friend class PermissionServiceTest; // needs an instance with no answers yet

    PermissionService() = default;

    Task<> requestMicrophone();
    Task<> requestSpeechRecognition();

    void setMicrophoneGranted(bool granted);
    void setSpeechGranted(bool granted);
    void setScreenCaptureGranted(bool granted);

    bool m_microphoneGranted = false;
    bool m_speechGranted = false;
    bool m_screenCaptureGranted = false;
    bool m_allPermissionsChecked = false;
};

} // namespace talvenor
