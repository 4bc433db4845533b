// The only place where the program talks to the mount.
//
// The mount is a telescope driver, reached by its ProgID. Use: set the ProgID (or ChooseTelescope), then
// LoadTelescope, read and slew, DisconnectTelescope at the end. No operation throws to its caller except the
// simulator's two; each reports its own failures to the log and, most of them, in a pop-up.
#pragma once

#include <optional>
#include <string>

#include "devices/frm_telescope.h"
#include "devices/link_services.h"

namespace vantrel::devices {

/// How an operation of the link names and shows its failures.
struct LinkOperation;

class TelescopeLink : public engine::TelescopePort {
  public:
    TelescopeLink(const LinkServices& services, engine::UtilityPort& utility, frmTelescope& window);

    /// Lets the operator choose the driver, remembers the choice and connects to it. When nothing is chosen
    /// the driver stays.
    void ChooseTelescope();
    /// The same with a driver that needs no choosing.
    void UseTelescope(const std::string& progId);
    /// Creates the chosen driver and connects to it, unless one is connected already.
    void LoadTelescope();
    /// The same, with failures reported as its own.
    void ConnectTelescope();
    /// Disconnects and lets go of the driver.
    void DisconnectTelescope();
    /// Shows the driver's own set-up dialog; a connected driver is disconnected meanwhile.
    void SetupTelescope();
    bool TelescopeIsConnected();
    /// Up to four attempts, 3 s apart; Stop ends them.
    void EnsureTelescopeConnected();
    /// The description that the driver is registered with.
    std::string GetTelescopeFriendlyName(const std::string& progId);

    double GetTelescopeRA() override;
    /// A reading beyond ±90 is repeated for about a second, then reported and returned as it is; -1000 when
    /// no driver is connected.
    double GetTelescopeDec() override;
    std::optional<engine::EquatorialPosition> readingIfKnown() override;
    void SlewToCoordinates(double ra, double dec) override;
    /// Sends the mount one command to slew (hours, degrees); true when it took it.
    bool TelescopeMoveIsSuccessful(double ra, double dec);
    /// Sends the mount its command to stop where the setting "AbortSlewOnStop" says so, which it does for
    /// real mounts unless the operator changes it. Otherwise nothing: a slew ends when the mount ends it.
    void AbortTelescopeSlew() override;
    /// From the mount, else from the clock and the site's longitude.
    double SiderealTime() override;
    /// From the mount, else as stored.
    double SiteLatitude() override;
    double SiteLongitude() override;
    std::optional<double> siteHeightIfKnown() override;
    bool looksThroughAir() override;
    void simulatorExpose() override;
    void simulatorSaveImage(const std::string& path) override;

    /// The site as the mount itself tells it, in degrees; nothing when it can't.
    std::optional<double> mountLatitude();
    std::optional<double> mountLongitude();

    /// Lets waiting events run for the time that a driver needs to come up or go down.
    void YieldPause();

    const std::string& TelescopeProgID() const { return TelescopeProgID_; }
    void setTelescopeProgID(std::string progId) { TelescopeProgID_ = std::move(progId); }
    const std::string& TelescopeName() const { return TelescopeName_; }
    void updateUsingAxisSimulator();

    /// The notice that stands while a driver is being loaded.
    void showLoadingMessage();
    void closeLoadingMessage();

    /// While this is set, the window's timer undoes any connection it finds.
    bool DisconnectRequested() const { return DisconnectRequested_; }
    void clearDisconnectRequest() { DisconnectRequested_ = false; }

    /// The driver's own word; throws OperationError, number 91 when there is no driver.
    bool driverIsConnected();
    /// The mount is reached over a network, and found again after a trouble, as long as its driver is held.
    bool reachesRealMount() const;
    /// True while an operation is in the middle of linking the driver or letting it go.
    bool linking() const { return linking_ > 0; }
    /// Lets go of the driver, unless an operation is in the middle of linking it.
    void releaseDriver();
    /// Whether there is a driver, which may have failed since; nobody is asked.
    bool holdsDriver() const { return driver_ != nullptr; }

  private:
    class Linking;
    class Disconnecting;

    void adopt(const std::string& progId);
    void link();
    bool abortsSlews() const;
    void awaitEndOfSlew();
    void watchSlew(double ra, double dec);
    void repeatReadOfDec(double& dec);
    double clockSiderealTime();
    double siteCoordinate(const LinkOperation& operation);
    std::optional<double> numberFromMount(const char* member);

    platform::Value get(const char* member);
    platform::Value call(const char* member, const platform::Arguments& arguments = {});

    template <typename Body>
    void attempt(const LinkOperation& operation, Body&& body);
    void report(const LinkOperation& operation, const platform::OperationError& error);
    void popUp(const std::string& text, double seconds);

    LinkServices services_;
    engine::UtilityPort& utility_;
    frmTelescope& window_;

    platform::ObjectRef driver_;
    std::string TelescopeProgID_;
    std::string TelescopeName_;
    bool DisconnectRequested_ = false;
    bool disconnecting_ = false;
    int linking_ = 0;  // operations on the stack that hold the driver half-linked
};

}  // namespace vantrel::devices
