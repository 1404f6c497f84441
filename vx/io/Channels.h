#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/IChannel.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/io/vorb/IVXChannel.h"

namespace vx::io {

/// Makes channels of streams and of component channels, to which they hold references. Exceptions of a wrapped stream
/// reach the caller unchanged; a component's negative result is thrown as ResultException. Channels of streams are
/// component channels as well.
class VX_API Channels {
public:
    /// A channel that cannot be inherited. With a null stream its direction is not supported.
    static Reference<IChannel> adaptStreams(InputStream* input, OutputStream* output);
    /// `id` names the channel to another process.
    static Reference<IInheritableChannel> adaptStreams(InputStream* input, OutputStream* output, const String& id);
    static Reference<IChannel> adaptVorbChannel(vorb::IVXChannel* channel);
    /// Throws ResultException for a component that cannot be inherited.
    static Reference<IInheritableChannel> adaptVorbWithInheritance(vorb::IVXChannel* channel);

private:
    Channels() = default;
    ~Channels() = default;
};

} // namespace vx::io
