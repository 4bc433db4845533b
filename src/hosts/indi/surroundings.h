// What devices of INDI servers stand on.
#pragma once

#include "hosts/byte_stream.h"
#include "hosts/equinox_conversion.h"
#include "hosts/indi/client.h"
#include "hosts/pumped_wait.h"
#include "platform/event_loop.h"

namespace vantrel::hosts::indi {

/// Outlives everything that is made of it.
struct Surroundings {
    platform::EventLoop& loop;
    ByteStreams& streams;
    const PumpedWait& wait;
    Tell tell;
    EquinoxConversion equinox;
};

}  // namespace vantrel::hosts::indi
