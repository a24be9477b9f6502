#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

#include <memory>

namespace talvenor {

/// Frees what libav has allocated, each kind in its own way.
struct LibavDeleter
{
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
    void operator()(SwrContext *resampler) const { swr_free(&resampler); }
};

/// Closes what `avformat_open_input` has opened.
struct LibavInputCloser
{
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};

/// Frees a muxer; its I/O context belongs to whoever has made it.
struct LibavOutputFreer
{
    void operator()(AVFormatContext *context) const { avformat_free_context(context); }
};

/// Frees an I/O context that was made on a buffer of its own.
struct LibavIoFreer
{
    void operator()(AVIOContext *context) const
    {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};

using AVIOContextPointer = std::unique_ptr<AVIOContext, LibavIoFreer>;
using AVCodecContextPointer = std::unique_ptr<AVCodecContext, LibavDeleter>;
using AVFramePointer = std::unique_ptr<AVFrame, LibavDeleter>;
using AVPacketPointer = std::unique_ptr<AVPacket, LibavDeleter>;
using SwrContextPointer = std::unique_ptr<SwrContext, LibavDeleter>;
using AVInputPointer = std::unique_ptr<AVFormatContext, LibavInputCloser>;
using AVOutputPointer = std::unique_ptr<AVFormatContext, LibavOutputFreer>;

} // namespace talvenor
