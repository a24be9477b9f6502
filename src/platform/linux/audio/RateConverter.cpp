#include "platform/linux/audio/RateConverter.h"

#include "foundation/LocalizedError.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <cstdint>

namespace talvenor {

void RateConverter::Free::operator()(SwrContext *context) const
{
    swr_free(&context);
}

RateConverter::RateConverter(int fromRate, int toRate)
{
    SwrContext *context = nullptr;
    AVChannelLayout mono AV_CHANNEL_LAYOUT_MONO; // not const: version 5 takes no pointer to const
    int result = swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_FLT, toRate, &mono, AV_SAMPLE_FMT_FLT,
                                     fromRate, 0, nullptr);
    m_context.reset(context);
    if (result >= 0)
        result = swr_init(context);
    if (result < 0)
        throw PlatformError(QStringLiteral("libswresample"), result,
                            QStringLiteral("Cannot convert %1 Hz to %2 Hz.").arg(fromRate).arg(toRate));
}

std::span<const float> RateConverter::convert(std::span<const float> input)
{
    const int room = swr_get_out_samples(m_context.get(), int(input.size()));
    if (room <= 0)
        return {};
    m_output.resize(std::size_t(room));
    const auto *in = reinterpret_cast<const std::uint8_t *>(input.data());
    auto *out = reinterpret_cast<std::uint8_t *>(m_output.data());
    const int count = swr_convert(m_context.get(), &out, room, &in, int(input.size()));
    return std::span<const float>(m_output).first(std::size_t(count > 0 ? count : 0));
}

} // namespace talvenor
