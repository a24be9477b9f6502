#pragma once

#include "platform/AudioEngine.h"
#include "platform/AudioFile.h"
#include "platform/AudioPlayer.h"
#include "platform/Authorization.h"
#include "platform/ColorScheme.h"
#include "platform/FilePanels.h"
#include "platform/HttpTransport.h"
#include "platform/SecretStore.h"
#include "platform/SpeechRecognizer.h"
#include "platform/SystemAudioStream.h"

#include <functional>
#include <memory>

namespace talvenor {

/// All that the program asks of the operating system: one maker or one object for each seam.
///
/// Filled once at start, before other threads exist, and only read afterwards; tests replace single members
/// to provoke what a device does not do on demand. A port to another system fills it with its own.
struct Platform
{
    std::function<std::unique_ptr<AudioEngine>()> createAudioEngine;

    /// Opens a new file for writing, replacing an older one; throws PlatformError. May block: general pool.
    std::function<std::unique_ptr<AudioFile>(const QString &path, const AudioFileSettings &settings)>
        createAudioFile;

    /// Opens an audio file for playback; throws PlatformError at once if it is none. Main thread.
    std::function<std::unique_ptr<AudioPlayer>(const QString &path)> createAudioPlayer;

    /// Asks what can be listened to; throws PlatformError when there is no sound server.
    std::function<Task<ShareableContent>()> shareableContent;

    std::function<std::shared_ptr<SystemAudioStream>(const ShareableDisplay &display,
                                                     const SystemAudioConfiguration &configuration)>
        createSystemAudioStream;

    /// A recogniser for a locale such as "de-DE", or null where there is none. Any thread; may block.
    std::function<std::unique_ptr<SpeechRecognizer>(const QString &localeIdentifier)> createSpeechRecognizer;

    std::shared_ptr<Authorization> authorization;
    std::shared_ptr<SecretStore> secretStore;
    std::shared_ptr<HttpTransport> httpTransport;
    std::shared_ptr<FilePanels> filePanels;
    std::shared_ptr<ColorSchemePreference> colorScheme;

    /// The one platform of the process.
    [[nodiscard]] static Platform &shared();
};

} // namespace talvenor
