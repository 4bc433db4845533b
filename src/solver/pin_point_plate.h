// "PinPoint.Plate": the astrometric engine as an automation object.
//
// Use in this order: catalogue and detection parameters, AttachFITS (or ImageArray), start position and
// scales, FindImageStars, FindCatalogStars, Solve, then the solution's properties and UpdateFITS. Positions
// are told and taken in the equinox of date of the exposure unless Equinox is set; world coordinates in files
// are ICRS.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "catalogs/vizier_catalog.h"
#include "fits/fits_image.h"
#include "platform/background.h"
#include "platform/clock.h"
#include "platform/dispatch_object.h"
#include "platform/folder_map.h"
#include "sky/star_catalog.h"
#include "solver/image_solving.h"
#include "solver/plate_frame.h"
#include "solver/plate_solver.h"

namespace vantrel::solver {

class PinPointPlate : public platform::DispatchObject {
  public:
    /// Stars are found and matched in the background. The network is used only by the catalogues that stay
    /// there. Without patterns plates are solved near their start only.
    PinPointPlate(const platform::Clock& clock, platform::Background& background,
                  const platform::FolderMap& folders, sky::CatalogSource builtIn,
                  catalogs::NetworkAccess network = {}, PatternSource patterns = {});

  private:
    void addCatalogMembers();
    void addDetectionMembers();
    void addImageMembers();
    void addPlateMembers();
    void addSolutionMembers();

    bool attach(const std::string& path);
    void use(fits::FitsImage image);
    void detach();
    bool findImageStars();
    bool findCatalogStars();
    bool solve();
    bool solveNearby();
    bool solveWith(double scaleX, double scaleY);
    bool solveFarAway();
    std::vector<ImageStar> starsToMatch() const;
    void adopt(const SolvedPlate& solution);
    void updateFits();
    platform::Words failureReason();

    const std::shared_ptr<const fits::FitsImage>& image() const;
    std::shared_ptr<const sky::StarCatalog> catalogue();
    void setCatalogPath(const std::string& folder);
    SearchArea area(const PlateGeometry& geometry) const;
    PlateGeometry geometry(double scaleX, double scaleY) const;
    std::vector<sky::CatalogStar> starsIn(const SearchArea& area);
    platform::Instant exposureTime() const;
    PlateFrame frame() const;
    sky::SkyPosition startInCatalogue() const;
    void setStart(sky::SkyPosition icrs);

    const platform::Clock& clock_;
    platform::Background& background_;
    const platform::FolderMap& folders_;
    sky::CatalogSource builtIn_;
    catalogs::NetworkAccess network_;
    PatternSource patterns_;

    int catalogNumber_ = 3;
    double catalogExpansion_ = 0.3;
    double faintest_ = 20;
    double brightest_ = -2;
    std::shared_ptr<const sky::StarCatalog> catalog_;
    bool catalogIsFar_ = false;  ///< in the network

    StarSettings detection_{.minimumBrightness = 200};
    double filterFwhmArcsec_ = 0;
    int maxSolveStars_ = 0;
    int minMatchStars_ = 0;
    double maxMatchResidual_ = 0;
    double searchRadius_ = 0;  ///< degrees; 0: near the start position only

    std::filesystem::path path_;
    std::shared_ptr<const fits::FitsImage> image_;
    std::optional<sky::TangentWcs> imageWcs_;

    double rightAscension_ = 0;  ///< hours
    double declination_ = 0;     ///< degrees
    double scaleX_ = 0;          ///< arcseconds per pixel
    double scaleY_ = 0;
    double roll_ = 0;
    int projection_ = 1;
    std::optional<double> equinox_;
    std::optional<platform::Instant> exposureStart_;

    StarList stars_;
    std::vector<sky::CatalogStar> catalogStars_;
    std::optional<SolvedPlate> solution_;
};

}  // namespace vantrel::solver
