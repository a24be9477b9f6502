#pragma once

#include "foundation/LocalizedError.h"

#include <pulse/pulseaudio.h>

#include <memory>

namespace talvenor {

/// libpulse's objects with owners that let go of them in the right way. All of them belong to one main loop
/// and are touched, and released, only with that loop's lock held.

/// Ends a request: its callback is not called any more.
struct PulseOperationDeleter
{
    void operator()(pa_operation *operation) const
    {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};
using PulseOperationPointer = std::unique_ptr<pa_operation, PulseOperationDeleter>;

/// Ends a stream: none of its callbacks is called any more.
struct PulseStreamDeleter
{
    void operator()(pa_stream *stream) const
    {
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream); // fails where it never was connected, which is as good
        pa_stream_unref(stream);
    }
};
using PulseStreamPointer = std::unique_ptr<pa_stream, PulseStreamDeleter>;

/// The connection to a server, with everything that still runs over it.
struct PulseContextDeleter
{
    void operator()(pa_context *context) const
    {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
using PulseContextPointer = std::unique_ptr<pa_context, PulseContextDeleter>;

/// An error of libpulse's, one of PA_ERR_..., with the library's own words.
[[nodiscard]] inline PlatformError pulseError(int code)
{
    return {QStringLiteral("pulse"), code, QString::fromUtf8(pa_strerror(code))};
}

} // namespace talvenor
