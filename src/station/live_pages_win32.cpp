#include "station/live_pages.h"

namespace vantrel::station {

std::unique_ptr<platform::LivePages> livePages(platform::EventLoop& /*loop*/,
                                               const imaging::OpenDocuments& /*documents*/) {
    return nullptr;
}

}  // namespace vantrel::station
