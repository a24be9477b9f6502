#include "platform/linux/media/LinuxMedia.h"

#include "platform/linux/media/LibavAudioFile.h"

extern "C" {
#include <libavutil/log.h>
}

namespace talvenor {

void installLinuxMedia(Platform &platform)
{
    // What libav has to say below its errors is about itself; errors come to the log as exceptions.
    av_log_set_level(AV_LOG_ERROR);
    platform.createAudioFile = [](const QString &path, const AudioFileSettings &settings) {
        return std::make_unique<LibavAudioFile>(path, settings);
    };
}

} // namespace talvenor
