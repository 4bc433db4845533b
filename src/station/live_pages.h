// Pages for the browsers of the local network, with the picture in front in the imaging program.
#pragma once

#include <memory>

#include "imaging/open_documents.h"
#include "platform/event_loop.h"
#include "platform/live_page.h"

namespace vantrel::station {

/// Refers to both.
std::unique_ptr<platform::LivePages> livePages(platform::EventLoop& loop,
                                               const imaging::OpenDocuments& documents);

}  // namespace vantrel::station
