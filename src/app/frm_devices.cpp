#include "app/frm_devices.h"

#include <string>
#include <vector>

#include "platform/text.h"

namespace vantrel::app {
namespace {

struct StoredText {
    platform::TextBox& box;
    const char* key;
    const char* usual;
};

std::vector<StoredText> textsOf(frmDevices& form) {
    return {{form.txtIndiServers, "IndiServers", "localhost:7624"},
            {form.txtAlpacaServers, "AlpacaServers", ""},
            {form.txtAlpacaPort, "AlpacaPort", "32227"},
            {form.txtMountPort, "MountPort", ""},
            {form.txtMountBaudRate, "MountBaudRate", ""}};
}

struct StoredSwitch {
    platform::CheckBox& box;
    const char* section;
    const char* key;
    const char* usual;  // of real mounts
};

std::vector<StoredSwitch> switchesOf(frmDevices& form) {
    return {{form.chkTellMount, "Hosts", "TellMount", "0"},
            {form.chkAbortSlewOnStop, "Main", "AbortSlewOnStop", "1"}};
}

std::string stored(const StoredText& text, engine::SettingsPort& settings) {
    return settings.GetSetting("Hosts", text.key, text.usual);
}

std::int16_t stored(const StoredSwitch& one, engine::SettingsPort& settings) {
    return platform::leadingNumber(settings.GetSetting(one.section, one.key, one.usual)) != 0 ? 1 : 0;
}

}  // namespace

frmDevices::frmDevices(platform::Screen& screen, engine::SettingsPort& settings)
    : Form(screen, "frmDevices", "Devices", {220, 220, 420, 260}),
      txtIndiServers(*this, "txtIndiServers"),
      txtAlpacaServers(*this, "txtAlpacaServers"),
      txtAlpacaPort(*this, "txtAlpacaPort"),
      txtMountPort(*this, "txtMountPort"),
      txtMountBaudRate(*this, "txtMountBaudRate"),
      chkTellMount(*this, "chkTellMount", "Tell the mount site and time"),
      chkAbortSlewOnStop(*this, "chkAbortSlewOnStop", "Stop ends slews"),
      cmdOK(*this, "cmdOK", "OK") {
    txtIndiServers.setToolTip("Name and port, such as localhost:7624; blanks between several");
    txtAlpacaServers.setToolTip("Name and port, such as 192.168.4.1:11111, of servers that no search finds");
    txtAlpacaPort.setToolTip("Servers are searched for at this port of the network");
    txtMountPort.setToolTip(
        "An INDI mount's serial port, such as /dev/ttyUSB0; empty leaves it to the driver");
    txtMountBaudRate.setToolTip("9600, say; empty leaves it to the driver");
    chkTellMount.setToolTip("Set an INDI mount's site and time to this program's on connecting");
    chkAbortSlewOnStop.setToolTip("Stop and closing the program stop a mount that is slewing");
    cmdOK.onClick = [this] { unload(); };
    onLoad = [this, &settings] { fill(settings); };
    onUnload = [this, &settings] { store(settings); };
}

void frmDevices::fill(engine::SettingsPort& settings) {
    for (const StoredText& text : textsOf(*this)) text.box.setText(stored(text, settings));
    for (const StoredSwitch& one : switchesOf(*this)) one.box.setValue(stored(one, settings));
}

void frmDevices::store(engine::SettingsPort& settings) {
    for (const StoredText& text : textsOf(*this))
        if (text.box.text() != stored(text, settings))
            settings.SaveSetting("Hosts", text.key, text.box.text());
    for (const StoredSwitch& one : switchesOf(*this))
        if (one.box.value() != stored(one, settings))
            settings.SaveSetting(one.section, one.key, std::to_string(one.box.value()));
}

}  // namespace vantrel::app
