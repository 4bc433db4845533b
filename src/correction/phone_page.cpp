#include "correction/phone_page.h"

#include <stdexcept>

#include "engine/indicators.h"
#include "platform/svg.h"
#include "platform/text.h"

namespace vantrel::correction {

namespace {

constexpr platform::Milliseconds kLook{300};
constexpr const char* kSection = "PolarAlign";
constexpr const char* kSwitch = "OnThePhone";

platform::LiveView::Adjuster seen(const char* name, const frmAdjust::Adjuster& adjuster) {
    return {name, adjuster.lblArrow.caption(), adjuster.lblMove.caption(), adjuster.lblSigma.caption(),
            adjuster.lblBolt.caption()};
}

}  // namespace

PhonePage::PhonePage(frmAdjust& form, platform::Button& stop, platform::EventLoop& loop,
                     engine::SettingsPort& settings, engine::LogPort& log, platform::LivePages* pages)
    : form_(form), stop_(stop), settings_(settings), log_(log), pages_(pages), look_(loop, kLook) {
    say("");
    look_.onTick = [this] { refresh(); };
    form_.chkPhone.onClick = [this] {
        settings_.SaveSetting(kSection, kSwitch, std::to_string(form_.chkPhone.value()));
        follow();
    };
    form_.onLoad = [this, before = form_.onLoad] {
        if (before) before();
        const bool wanted = settings_.GetSetting(kSection, kSwitch, "0") == "1";
        form_.chkPhone.setValue(wanted ? 1 : 0);
        follow();
    };
    form_.onUnload = [this, before = form_.onUnload] {
        if (before) before();
        look_.setEnabled(false);
        page_.reset();
        say("");
    };
}

void PhonePage::follow() {
    if (!form_.chkPhone.ticked()) {
        look_.setEnabled(false);
        page_.reset();
        say("");
        return;
    }
    if (page_) return;
    try {
        open();
    } catch (const std::runtime_error& error) {
        say(std::string("No page: ") + error.what());
        log_.AddToLog(form_.lblPhone.caption());
    }
}

/// The log tells no more than where the page is: whoever reads it should not be able to stop the mount.
void PhonePage::open() {
    if (pages_ == nullptr) throw std::runtime_error("This computer is in no local network");
    const std::string host = platform::trimmed(settings_.GetSetting(kSection, "PhoneAddress", ""));
    const double port = platform::leadingNumber(settings_.GetSetting(kSection, "PhonePort", "0"));
    constexpr double kHighestPort = 65'535;
    if (!(port >= 0 && port <= kHighestPort)) throw std::runtime_error("PhonePort is no port");
    page_ = pages_->open(host, static_cast<int>(port), {.onStop = [this] {
                             if (stop_.reachable()) log_.AddToLog("Stop was pressed on the phone");
                             stop_.click();
                         }});
    const std::string address = page_->address();
    const auto begin = address.find("//") + 2;
    log_.AddToLog("A page for the phone is open at " +
                  address.substr(begin, address.find('/', begin) - begin));
    say(address);
    shown_ = {};
    refresh();
    look_.setEnabled(true);
}

/// Without words it takes no room.
void PhonePage::say(const std::string& words) {
    form_.lblPhone.setCaption(words);
    form_.lblPhone.setVisible(!words.empty());
}

void PhonePage::refresh() {
    if (!page_) return;
    platform::LiveView now = view();
    if (now == shown_) return;
    page_->show(now);
    shown_ = std::move(now);
}

platform::LiveView PhonePage::view() const {
    constexpr double kDialWidth = 300;
    const std::string& age = form_.lblAge.caption();
    return {.azimuth = seen("Azimuth", form_.azimuth),
            .elevation = seen("Elevation", form_.elevation),
            .verdict = form_.lblLiveState.caption(),
            .total = form_.lblLiveTotal.caption(),
            .age = age.empty() ? std::nullopt : std::optional(platform::leadingNumber(age)),
            .live = form_.cmdEndAdjust.enabled(),
            .stale = !form_.azimuth.lblMove.enabled(),
            .stoppable = stop_.reachable(),
            .night = engine::nightVision(settings_),
            .dial = platform::svgOf(form_.picAdjust.drawing(), kDialWidth)};
}

}  // namespace vantrel::correction
