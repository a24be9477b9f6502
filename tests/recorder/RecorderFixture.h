#pragma once

#include "recorder/RecorderViewModel.h"
#include "recorderfakes/ScriptedPanels.h"
#include "recorderfakes/ScriptedService.h"
#include "recorderfakes/ScriptedSpeech.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace talvenor::test {

/// A view model on a storage folder of its own, with a microphone, a recogniser and a service that do what a
/// test says. One at a time; main thread.
class RecorderFixture
{
public:
    RecorderFixture();
    ~RecorderFixture();
    Q_DISABLE_COPY_MOVE(RecorderFixture)

    /// Makes the view model; what the storage folder holds by then is its list.
    RecorderViewModel &start();

    /// Signs a user in whose profile has these values over those of a premium user.
    void signIn(const QJsonObject &overrides = {});
    void signOut();

    /// `recordings.json` as it is on the disk once all saves are through.
    [[nodiscard]] QJsonArray savedList();
    /// The file as it is this moment, saves under way or not.
    [[nodiscard]] QJsonArray listOnDisk() const;
    void writeList(const QList<Recording> &recordings);

    /// Records, waits for `seconds` ticks of the timer, stops. The entry is the first of the list.
    void record(int seconds = 1);

    std::shared_ptr<ScriptedService> service = std::make_shared<ScriptedService>();
    std::shared_ptr<MemorySecretStore> secrets = std::make_shared<MemorySecretStore>();
    std::shared_ptr<ScriptedPanels> panels = std::make_shared<ScriptedPanels>();
    std::shared_ptr<ScriptedAuthorization> authorization = std::make_shared<ScriptedAuthorization>();
    ScriptedSpeech speech;
    bool hasMicrophone = true;
    bool microphoneStarts = true;
    std::function<void()> whenEngineIsMade;      ///< called as capture begins
    std::function<void()> whenFileIsFinished;    ///< called by the thread that finishes a file
    std::optional<OneShot<void>> microphoneGate; ///< the microphone starts only when it is resumed
    std::function<void(PcmBuffer &)> tap;        ///< the tap of the newest engine
    QTemporaryDir folder;
    std::unique_ptr<RecorderViewModel> viewModel;
};

} // namespace talvenor::test
