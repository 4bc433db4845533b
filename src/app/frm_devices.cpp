#include "app/frm_devices.h"

#include <string>
#include <vector>

#include "platform/text.h"

namespace vantrel::app {

using platform::Words;

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

std::vector<StoredText> cameraTextsOf(frmDevices& form) {
    return {{form.txtCameraGain, "CameraGain", ""},
            {form.txtCameraOffset, "CameraOffset", ""},
            {form.txtCameraTemperature, "CameraTemperature", "-10"}};
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

std::vector<StoredSwitch> cameraSwitchesOf(frmDevices& form) {
    return {{form.chkCameraCooling, "Hosts", "CameraCooling", "0"}};
}

std::string stored(const StoredText& text, engine::SettingsPort& settings) {
    return settings.GetSetting("Hosts", text.key, text.usual);
}

std::int16_t stored(const StoredSwitch& one, engine::SettingsPort& settings) {
    return platform::leadingNumber(settings.GetSetting(one.section, one.key, one.usual)) != 0 ? 1 : 0;
}

void fill(const std::vector<StoredText>& texts, const std::vector<StoredSwitch>& switches,
          engine::SettingsPort& settings) {
    for (const StoredText& text : texts) text.box.setText(stored(text, settings));
    for (const StoredSwitch& one : switches) one.box.setValue(stored(one, settings));
}

/// Whether anything had been changed.
bool store(const std::vector<StoredText>& texts, const std::vector<StoredSwitch>& switches,
           engine::SettingsPort& settings) {
    bool changed = false;
    const auto save = [&](const char* section, const char* key, const std::string& value) {
        settings.SaveSetting(section, key, value);
        changed = true;
    };
    for (const StoredText& text : texts)
        if (text.box.text() != stored(text, settings)) save("Hosts", text.key, text.box.text());
    for (const StoredSwitch& one : switches)
        if (one.box.value() != stored(one, settings))
            save(one.section, one.key, std::to_string(one.box.value()));
    return changed;
}

}  // namespace

frmDevices::frmDevices(platform::Screen& screen, engine::SettingsPort& settings)
    : Form(screen, "frmDevices", "Devices", {220, 120, 420, 400}),
      txtIndiServers(*this, "txtIndiServers"),
      txtAlpacaServers(*this, "txtAlpacaServers"),
      txtAlpacaPort(*this, "txtAlpacaPort"),
      txtMountPort(*this, "txtMountPort"),
      txtMountBaudRate(*this, "txtMountBaudRate"),
      chkTellMount(*this, "chkTellMount", Words::tr("Tell the mount site and time")),
      chkAbortSlewOnStop(*this, "chkAbortSlewOnStop", Words::tr("Stop ends slews")),
      txtCameraGain(*this, "txtCameraGain"),
      txtCameraOffset(*this, "txtCameraOffset"),
      chkCameraCooling(*this, "chkCameraCooling", Words::tr("Cool the camera to")),
      txtCameraTemperature(*this, "txtCameraTemperature"),
      lblCameraGain(*this, "lblCameraGain", ""),
      lblCameraOffset(*this, "lblCameraOffset", ""),
      lblCameraCooling(*this, "lblCameraCooling", ""),
      cmdOK(*this, "cmdOK", "OK") {
    txtIndiServers.setToolTip(Words::tr("Name and port, such as localhost:7624; blanks between several"));
    txtAlpacaServers.setToolTip(
        Words::tr("Name and port, such as 192.168.4.1:11111, of servers that no search finds"));
    txtAlpacaPort.setToolTip(Words::tr("Servers are searched for at this port of the network"));
    txtMountPort.setToolTip(
        Words::tr("An INDI mount's serial port, such as /dev/ttyUSB0; empty leaves it to the driver"));
    txtMountBaudRate.setToolTip(Words::tr("9600, say; empty leaves it to the driver"));
    chkTellMount.setToolTip(Words::tr("Set an INDI mount's site and time to this program's on connecting"));
    chkAbortSlewOnStop.setToolTip(Words::tr("Stop and closing the program stop a mount that is slewing"));
    txtCameraGain.setToolTip(Words::tr("Empty leaves the gain that the camera has"));
    txtCameraOffset.setToolTip(Words::tr("Empty leaves the offset that the camera has"));
    chkCameraCooling.setToolTip(
        Words::tr("Without it a cooler that another program has switched on goes on"));
    for (platform::TextBox* box : {&txtCameraGain, &txtCameraOffset, &txtCameraTemperature})
        box->onLeave = [this, &settings] { storeCamera(settings); };
    chkCameraCooling.onClick = [this, &settings] { storeCamera(settings); };
    cmdOK.onClick = [this] { unload(); };
    onLoad = [this, &settings] { fill(settings); };
    onUnload = [this, &settings] { store(settings); };
}

void frmDevices::fill(engine::SettingsPort& settings) {
    app::fill(textsOf(*this), switchesOf(*this), settings);
    app::fill(cameraTextsOf(*this), cameraSwitchesOf(*this), settings);
}

void frmDevices::store(engine::SettingsPort& settings) {
    app::store(textsOf(*this), switchesOf(*this), settings);
    storeCamera(settings);
}

void frmDevices::storeCamera(engine::SettingsPort& settings) {
    if (app::store(cameraTextsOf(*this), cameraSwitchesOf(*this), settings) && onCameraChanged)
        onCameraChanged();
}

}  // namespace vantrel::app
