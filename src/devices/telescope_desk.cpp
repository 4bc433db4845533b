#include "devices/telescope_desk.h"

#include "platform/place_form.h"
#include "platform/text.h"

namespace vantrel::devices {

using namespace platform;

TelescopeDesk::TelescopeDesk(const LinkServices& services, TelescopeLink& link, frmTelescope& window)
    : services_(services), link_(link), window_(window), Timer1_(services.loop, Milliseconds{1000}) {
    window_.onLoad = [this] { Form_Load(); };
    window_.onUnload = [this] { Form_Unload(); };
    window_.cmdPickTelescope.onClick = [this] { cmdPickTelescope_Click(); };
    window_.cmdTelescopeSetup.onClick = [this] { cmdTelescopeSetup_Click(); };
    window_.cmdConnectTelescope.onClick = [this] { cmdConnectTelescope_Click(); };
    window_.cmdDisconnectTelescope.onClick = [this] { cmdDisconnectTelescope_Click(); };
    Timer1_.onTick = [this] { Timer1_Timer(); };
}

/// An empty choice that is stored is kept: it means that the operator has to choose.
std::string TelescopeDesk::storedTelescope() {
    constexpr const char* kKey = "MyTelescopeID";
    constexpr const char* kDefault = "ScopeSim.Telescope";
    if (services_.settings.GetSetting("Main", kKey, kDefault).empty()) return {};
    return services_.settings.GetMainSetting(kKey, kDefault);
}

void TelescopeDesk::linkAtStartUp() {
    link_.setTelescopeProgID(storedTelescope());
    if (!link_.TelescopeProgID().empty()) {
        link_.showLoadingMessage();
        link_.LoadTelescope();
        services_.messages.ClosePopupMessage();
        window_.show();
    } else {
        link_.ChooseTelescope();
        link_.showLoadingMessage();
        link_.LoadTelescope();
        link_.closeLoadingMessage();
    }
    link_.EnsureTelescopeConnected();
}

void TelescopeDesk::cmdTelescope_Click() {
    window_.show();
    window_.setOnTop(true);
    link_.clearDisconnectRequest();
    link_.YieldPause();
    link_.EnsureTelescopeConnected();
}

void TelescopeDesk::Form_Load() {
    services_.state.forgetStop();
    window_.show();
    const Rectangle& area = window_.screen().workArea();
    const auto stored = [&](const char* key, int otherwise) {
        return leadingNumber(services_.settings.GetMainSetting(key, std::to_string(otherwise)));
    };
    PlaceFormOnScreen(window_, stored("TelescopeTop", area.top + area.height - window_.place().height),
                      stored("TelescopeLeft", area.left + area.width - window_.place().width));
    Timer1_.setEnabled(true);

    link_.clearDisconnectRequest();
    link_.setTelescopeProgID(storedTelescope());
    if (!link_.TelescopeProgID().empty()) {
        link_.showLoadingMessage();
        link_.LoadTelescope();
        services_.messages.ClosePopupMessage();
        window_.txtTelescopeName.setText(link_.TelescopeName());
    } else {
        link_.ChooseTelescope();
        link_.showLoadingMessage();
        link_.LoadTelescope();
        link_.closeLoadingMessage();
    }
    link_.updateUsingAxisSimulator();
}

void TelescopeDesk::Form_Unload() {
    Timer1_.setEnabled(false);
    if (window_.minimised()) return;
    services_.settings.SaveMainSetting("TelescopeTop", std::to_string(window_.place().top));
    services_.settings.SaveMainSetting("TelescopeLeft", std::to_string(window_.place().left));
}

void TelescopeDesk::cmdPickTelescope_Click() {
    change([this] { link_.ChooseTelescope(); });
}

void TelescopeDesk::useTelescope(const std::string& progId) {
    if (link_.TelescopeProgID() != progId) return change([&] { link_.UseTelescope(progId); });
    link_.clearDisconnectRequest();
    link_.EnsureTelescopeConnected();
}

void TelescopeDesk::change(const std::function<void()>& choose) {
    services_.state.forgetStop();
    if (link_.TelescopeIsConnected()) {
        link_.DisconnectTelescope();
        link_.clearDisconnectRequest();
        services_.loop.yield();
        choose();
        link_.YieldPause();
        link_.ConnectTelescope();
    } else {
        link_.clearDisconnectRequest();
        choose();
    }
}

void TelescopeDesk::cmdTelescopeSetup_Click() {
    services_.state.forgetStop();
    link_.SetupTelescope();
}

void TelescopeDesk::cmdConnectTelescope_Click() {
    services_.state.forgetStop();
    window_.cmdConnectTelescope.setEnabled(false);
    window_.cmdDisconnectTelescope.setEnabled(true);
    window_.txtTelescopeSelectionStatus.setText(" Connecting");
    // An earlier Disconnect is over: otherwise the timer would undo this connection.
    link_.clearDisconnectRequest();
    link_.ConnectTelescope();
    // Where no driver could be created the timer has nothing to watch.
    if (!link_.TelescopeIsConnected()) showNotConnected();
}

void TelescopeDesk::cmdDisconnectTelescope_Click() {
    services_.state.forgetStop();
    window_.cmdConnectTelescope.setEnabled(true);
    window_.cmdDisconnectTelescope.setEnabled(false);
    window_.txtTelescopeSelectionStatus.setText(" Disconnecting");
    link_.DisconnectTelescope();
}

/// A look that takes its time, or a driver that is coming up or going down, isn't looked at again meanwhile.
void TelescopeDesk::Timer1_Timer() {
    if (services_.state.StopRequested || looking_ || link_.linking()) return;
    looking_ = true;
    look();
    looking_ = false;
}

void TelescopeDesk::look() {
    try {
        if (!link_.driverIsConnected()) {
            showLinkDown();
        } else if (!link_.DisconnectRequested()) {
            link_.updateUsingAxisSimulator();
            window_.txtTelescopeSelectionStatus.setText(" Connected");
            window_.cmdConnectTelescope.setEnabled(false);
            window_.cmdTelescopeSetup.setEnabled(true);
            window_.cmdDisconnectTelescope.setEnabled(true);
        } else {
            link_.DisconnectTelescope();
            link_.clearDisconnectRequest();
        }
    } catch (...) {
        // Without a driver there is nothing to watch, and one that fails may do so once.
        if (isGone(currentError())) showLinkDown();
    }
}

void TelescopeDesk::showLinkDown() {
    showNotConnected();
    link_.clearDisconnectRequest();
    if (!link_.reachesRealMount()) link_.releaseDriver();
}

void TelescopeDesk::showNotConnected() {
    const bool hasTelescope = !window_.txtTelescopeName.text().empty();
    window_.txtTelescopeSelectionStatus.setText(" Not Connected");
    window_.cmdConnectTelescope.setEnabled(hasTelescope);
    window_.cmdTelescopeSetup.setEnabled(hasTelescope);
    window_.cmdDisconnectTelescope.setEnabled(false);
}

}  // namespace vantrel::devices
