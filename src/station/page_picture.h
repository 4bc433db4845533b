// The picture in front in the imaging program, small, as pages show it.
#pragma once

#include <cstdint>
#include <string>

#include "imaging/open_documents.h"
#include "page/network_pages.h"

namespace vantrel::station {

class PagePicture {
  public:
    explicit PagePicture(const imaging::OpenDocuments& documents) : documents_(documents) {}

    /// Both refer to this.
    page::PictureSource source();

  private:
    std::uint64_t number();
    std::string png();

    const imaging::OpenDocuments& documents_;
    platform::ImageRef seen_;
    std::uint64_t number_ = 0;
    std::uint64_t madeOf_ = 0;
    std::string made_;
};

}  // namespace vantrel::station
