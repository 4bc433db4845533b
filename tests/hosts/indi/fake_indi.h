// An INDI server with a mount and a camera, in virtual time. It speaks as the simulators of Debian's indi-bin
// do; how it takes commands can be spoiled one by one.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/fake_network.h"
#include "hosts/indi/numbers.h"
#include "hosts/indi/xml_stream.h"

namespace vantrel::test {

/// How a command is taken.
struct Treatment {
    enum class Kind { kObey, kRefuse, kIgnore, kIgnoreWithMessage, kCut, kHangUp, kSilence, kDie };
    Kind kind = Kind::kObey;
    Milliseconds delay{0};
    bool twice = false;  // everything is said two times
};

class FakeIndi {
  public:
    FakeIndi(platform::VirtualTime& time, platform::QueuedEventLoop& loop)
        : network(time, loop), time_(time), loop_(loop) {
        network.onConnection = [this](const std::shared_ptr<FakeConnection>& connection) {
            take(connection);
        };
    }

    static constexpr const char* kMount = "Mount";
    static constexpr const char* kCamera = "Camera";

    FakeNetwork network;
    /// By property; what isn't there is obeyed.
    std::map<std::string, Treatment> treatment;
    std::string refuses;  // a command as it stands in `commands`, of any treatment
    /// What came, as "EQUATORIAL_EOD_COORD RA=3 DEC=20".
    std::vector<std::string> commands;

    // The mount.
    std::string coordinates = "EQUATORIAL_EOD_COORD";
    double ra = 5, dec = 40;
    Milliseconds slewTime{5000};
    bool arrives = true;  // false: it stays Busy
    bool moves = true;    // while it slews
    bool parked = false;
    bool tracking = false;      // until it has slewed
    bool tellsItsPlace = true;  // site and sidereal time
    bool answersPings = true;
    // The camera.
    std::string picture = "SIMPLE  =                    T";
    std::string format = ".fits";
    Milliseconds readout{200};
    bool delivers = true;

    /// The driver died and was started again, as indiserver does it.
    void restartDriver(const std::string& device) {
        connected_[device] = false;
        for (const auto& connection : properties())
            connection->send("<delProperty device=\"" + device + "\"/>");
        for (const auto& connection : properties()) connection->send(definitions(device), Milliseconds{100});
    }
    /// Every connection ends, and new ones are answered as `network.answer` says.
    void stop() {
        slewing_ = false;
        for (const auto& connection : connections_) connection->hangUp();
        connections_.clear();
        blobs_.clear();
        connected_.clear();
        tasks_.clear();
    }
    void cutCables() {
        for (const auto& connection : connections_) connection->cutCable();
    }
    /// What another program does to the device.
    void disconnectByOthers(const std::string& device) {
        connected_[device] = false;
        sayAll(connection("set", device));
    }
    void giveExposureUp() {
        tasks_.clear();
        sayAll(exposure("Idle", 0));
    }
    void sayAll(const std::string& xml, Milliseconds delay = Milliseconds{0}) {
        for (const auto& connection : properties()) connection->send(xml, delay);
    }
    void sendPicture(const std::string& bytes, Milliseconds delay = Milliseconds{0},
                     const std::string& timestamp = {}) {
        for (const auto& connection : blobs_) connection->send(blob(bytes, timestamp), delay);
    }
    /// Connections that get pictures.
    const std::vector<std::shared_ptr<FakeConnection>>& pictureConnections() const { return blobs_; }
    bool slewing() const { return slewing_; }
    long count(const std::string& beginning) const {
        return std::count_if(commands.begin(), commands.end(),
                             [&](const std::string& command) { return command.starts_with(beginning); });
    }

    static std::string base64(const std::string& bytes) {
        constexpr std::string_view kAlphabet =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            unsigned group = 0;
            for (std::size_t k = 0; k < 3; ++k)
                group = group << 8U | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
            for (std::size_t k = 0; k < 4; ++k)
                text += i + k > bytes.size() ? '=' : kAlphabet[group >> (18 - 6 * k) & 63U];
            if (i % 54 == 51) text += '\n';
        }
        return text;
    }

    std::string stamp() const {
        return platform::formatTime(platform::civilUtc(time_.utc()), "yyyy-MM-ddTHH:mm:ss");
    }

  private:
    struct Task {
        platform::TimerHandle timer;
        std::shared_ptr<bool> done;
    };
    using XmlElement = hosts::indi::XmlElement;
    using XmlStream = hosts::indi::XmlStream;

    void take(const std::shared_ptr<FakeConnection>& connection) {
        connections_.push_back(connection);
        const std::weak_ptr<FakeConnection> weak = connection;
        const auto stream = std::make_shared<XmlStream>(
            [this, weak](const XmlElement& element) { hear(weak.lock(), element); });
        connection->onReceive = [stream](const std::string& bytes) { stream->feed(bytes); };
    }

    std::vector<std::shared_ptr<FakeConnection>> properties() const {
        std::vector<std::shared_ptr<FakeConnection>> some;
        for (const auto& connection : connections_)
            if (std::find(blobs_.begin(), blobs_.end(), connection) == blobs_.end())
                some.push_back(connection);
        return some;
    }

    void hear(const std::shared_ptr<FakeConnection>& connection, const XmlElement& element) {
        const std::string& device = element.attribute("device");
        const std::string& property = element.attribute("name");
        if (element.name == "getProperties") {
            if (property.empty())
                connection->send(definitions(kMount) + definitions(kCamera),
                                 treatment["getProperties"].delay);
            else if (property == "CONNECTION" && treatment["getProperties"].kind == Treatment::Kind::kObey)
                connection->send(this->connection("def", device));
        } else if (element.name == "enableBLOB") {
            if (std::find(blobs_.begin(), blobs_.end(), connection) == blobs_.end())
                blobs_.push_back(connection);
        } else if (element.name == "pingRequest") {
            if (answersPings) connection->send("<pingReply uid=\"" + element.attribute("uid") + "\"/>");
        } else if (element.name.starts_with("new")) {
            command(device, property, element);
        }
    }

    void command(const std::string& device, const std::string& property, const XmlElement& element) {
        std::string text = property;
        std::map<std::string, std::string> values;
        for (const XmlElement& child : element.children) {
            values[child.attribute("name")] = child.text;
            if (child.text != "Off") text += " " + child.attribute("name") + "=" + child.text;
        }
        commands.push_back(text);
        const Treatment how = text == refuses ? Treatment{Treatment::Kind::kRefuse} : treatment[property];
        const std::string complaint =
            "<message device=\"" + device + "\" message=\"[ERROR] No " + property + " today.\"/>";
        switch (how.kind) {
            case Treatment::Kind::kObey:
                break;
            case Treatment::Kind::kIgnore:
                return;
            case Treatment::Kind::kIgnoreWithMessage:
                return sayAll(complaint, how.delay);
            case Treatment::Kind::kRefuse:
                return sayAll(complaint + "<setNumberVector device=\"" + device + "\" name=\"" + property +
                                  "\" state=\"Alert\"/>",
                              how.delay);
            case Treatment::Kind::kCut:
                sayAll("<setNumberVector device=\"" + device + "\" na", how.delay);
                return later(how.delay, [this] { stop(); });
            case Treatment::Kind::kHangUp:
                return stop();
            case Treatment::Kind::kDie:
                return restartDriver(device);
            case Treatment::Kind::kSilence:
                return cutCables();
        }
        later(how.delay, [this, device, property, values] { obey(device, property, values); });
        if (how.twice) later(how.delay, [this, device, property, values] { obey(device, property, values); });
    }

    void later(Milliseconds delay, std::function<void()> what) {
        if (delay.count() == 0) return what();
        std::erase_if(tasks_, [](const Task& task) { return *task.done; });
        const auto done = std::make_shared<bool>(false);
        tasks_.push_back({loop_.after(delay,
                                      [done, what = std::move(what)] {
                                          *done = true;
                                          what();
                                      }),
                          done});
    }

    void obey(const std::string& device, const std::string& property,
              std::map<std::string, std::string> values) {
        if (property == "CONNECTION") {
            connected_[device] = values["CONNECT"] == "On";
            sayAll(connection("set", device));
            if (connected_[device]) sayAll(device == kMount ? mountProperties() : cameraProperties());
        } else if (property == coordinates) {
            slew(number(values["RA"]), number(values["DEC"]));
        } else if (property == "TELESCOPE_ABORT_MOTION") {
            tasks_.clear();
            slewing_ = false;
            sayAll(position("Idle") + vector("set", "Switch", kMount, property, "Ok", {{"ABORT", "Off"}}));
        } else if (property == "TELESCOPE_PARK") {
            parked = values["PARK"] == "On";
            sayAll(park("set"));
        } else if (property == "CCD_EXPOSURE") {
            expose(number(values["CCD_EXPOSURE_VALUE"]));
        } else if (property == "CCD_ABORT_EXPOSURE") {
            giveExposureUp();
            sayAll(vector("set", "Switch", kCamera, property, "Ok", {{"ABORT", "Off"}}));
        } else {
            std::string xml = "<setNumberVector device=\"" + device + "\" name=\"" + property +
                              "\" state=\"" + (property == "CCD_BINNING" ? "Idle" : "Ok") + "\">";
            for (const auto& [name, value] : values)
                xml += "<one name=\"" + name + "\">\n" + value + "\n</one>";
            sayAll(xml + "</setNumberVector>");
        }
    }

    void slew(double targetRa, double targetDec) {
        slewing_ = true;
        sayAll(position("Busy"));
        constexpr int kSteps = 5;
        for (int step = 1; step <= kSteps; ++step)
            later(slewTime * step / kSteps, [this, step, targetRa, targetDec] {
                if (moves) {
                    ra += (targetRa - ra) * step / kSteps;
                    dec += (targetDec - dec) * step / kSteps;
                }
                const bool there = step == kSteps && arrives;
                sayAll(position(there ? "Ok" : "Busy"));
                slewing_ = !there;
                if (!there) return;
                tracking = true;
                sayAll(trackState("set"));
            });
    }

    void expose(double seconds) {
        sayAll(exposure("Busy", seconds));
        const Milliseconds end = Milliseconds{static_cast<long>(seconds * 1000)};
        later(end, [this] { sayAll(exposure("Busy", 0)); });
        later(end + readout, [this] {
            if (delivers) sendPicture(picture, Milliseconds{0}, stamp());
            sayAll(exposure("Ok", 0));
        });
    }

    // ---- its words

    static double number(const std::string& text) { return hosts::indi::readNumber(text).value_or(0); }
    static std::string text(double value) { return hosts::indi::writeNumber(value); }

    using Elements = std::vector<std::pair<std::string, std::string>>;
    static Elements chosen(bool first, const char* one, const char* other) {
        return {{one, first ? "On" : "Off"}, {other, first ? "Off" : "On"}};
    }
    static std::string limits(const char* least, const char* most) {
        return std::string(" min=\"") + least + "\" max=\"" + most + "\"";
    }

    /// "def" or "set"; the attributes are those of every element.
    std::string vector(const std::string& what, const std::string& kind, const std::string& device,
                       const std::string& property, const std::string& state, const Elements& elements,
                       const std::string& attributes = {}) const {
        const std::string tag = (what == "def" ? "def" : "one") + kind;
        std::string xml = "<" + what + kind + "Vector device=\"" + device + "\" name=\"" + property +
                          "\" state=\"" + state + "\" timestamp=\"" + stamp() + "\">\n";
        for (const auto& [name, value] : elements)
            xml += "    <" + tag + " name=\"" + name + "\"" + attributes + ">\n" + value + "\n    </" + tag +
                   ">\n";
        return xml + "</" + what + kind + "Vector>\n";
    }
    std::string ofMount(const std::string& kind, const std::string& property,
                        const Elements& elements) const {
        return vector("def", kind, kMount, property, "Idle", elements);
    }
    std::string ofCamera(const std::string& kind, const std::string& property, const Elements& elements,
                         const std::string& attributes = {}) const {
        return vector("def", kind, kCamera, property, "Idle", elements, attributes);
    }

    bool isConnected(const std::string& device) const {
        const auto found = connected_.find(device);
        return found != connected_.end() && found->second;
    }
    std::string connection(const std::string& what, const std::string& device) const {
        return vector(what, "Switch", device, "CONNECTION", what == "def" ? "Idle" : "Ok",
                      chosen(isConnected(device), "CONNECT", "DISCONNECT"));
    }
    std::string definitions(const std::string& device) const {
        std::string xml =
            connection("def", device) +
            vector("def", "Text", device, "DRIVER_INFO", "Idle",
                   {{"DRIVER_NAME", device}, {"DRIVER_INTERFACE", device == kMount ? "5" : "22"}});
        if (device == kMount)
            xml += ofMount("Number", "POLLING_PERIOD", {{"PERIOD_MS", "250"}}) +
                   ofMount("Text", "DEVICE_PORT", {{"PORT", "/dev/ttyUSB0"}}) +
                   ofMount("Switch", "DEVICE_BAUD_RATE", chosen(true, "9600", "115200"));
        if (isConnected(device)) xml += device == kMount ? mountProperties() : cameraProperties();
        return xml;
    }
    std::string position(const std::string& state) const {
        return vector("set", "Number", kMount, coordinates, state, {{"RA", text(ra)}, {"DEC", text(dec)}});
    }
    std::string trackState(const std::string& what) const {
        return vector(what, "Switch", kMount, "TELESCOPE_TRACK_STATE", tracking ? "Busy" : "Idle",
                      chosen(tracking, "TRACK_ON", "TRACK_OFF"));
    }
    std::string park(const std::string& what) const {
        return vector(what, "Switch", kMount, "TELESCOPE_PARK", "Ok", chosen(parked, "PARK", "UNPARK"));
    }
    std::string mountProperties() const {
        std::string xml =
            ofMount("Switch", "ON_COORD_SET", {{"TRACK", "Off"}, {"SLEW", "On"}, {"SYNC", "Off"}}) +
            ofMount("Number", coordinates, {{"RA", "0"}, {"DEC", "0"}}) +
            ofMount("Switch", "TELESCOPE_ABORT_MOTION", {{"ABORT", "Off"}}) + trackState("def") +
            ofMount("Text", "TIME_UTC", {{"UTC", ""}, {"OFFSET", ""}}) + park("def");
        if (tellsItsPlace)
            xml += ofMount("Number", "GEOGRAPHIC_COORD",
                           {{"LAT", "50:30:00"}, {"LONG", "350"}, {"ELEV", "200"}}) +
                   ofMount("Number", "TIME_LST", {{"LST", "6:30:00"}});
        return xml + position("Ok");
    }
    std::string exposure(const std::string& state, double left) const {
        return vector("set", "Number", kCamera, "CCD_EXPOSURE", state, {{"CCD_EXPOSURE_VALUE", text(left)}});
    }
    std::string cameraProperties() const {
        const auto sensor = [](const char* width, const char* height, const char* pixel) {
            return Elements{{"CCD_MAX_X", width}, {"CCD_MAX_Y", height}, {"CCD_PIXEL_SIZE", pixel}};
        };
        return ofCamera("Number", "CCD_EXPOSURE", {{"CCD_EXPOSURE_VALUE", "1"}}, limits("0.01", "3600")) +
               ofCamera("Switch", "CCD_ABORT_EXPOSURE", {{"ABORT", "Off"}}) +
               ofCamera("Number", "CCD_FRAME",
                        {{"X", "0"}, {"Y", "0"}, {"WIDTH", "1280"}, {"HEIGHT", "1024"}}) +
               ofCamera("Number", "CCD_BINNING", {{"HOR_BIN", "1"}, {"VER_BIN", "1"}}, limits("1", "4")) +
               ofCamera("Number", "CCD_INFO", sensor("0", "0", "0")) +
               ofCamera("Number", "CCD_TEMPERATURE", {{"CCD_TEMPERATURE_VALUE", "-10.5"}}) +
               ofCamera("Switch", "CCD_COOLER", chosen(false, "COOLER_ON", "COOLER_OFF")) +
               ofCamera("Number", "CCD_GAIN", {{"GAIN", "90"}}) +
               ofCamera("Number", "CCD_OFFSET", {{"OFFSET", "0"}}) +
               ofCamera("Switch", "CCD_FRAME_TYPE",
                        {{"FRAME_LIGHT", "On"},
                         {"FRAME_DARK", "Off"},
                         {"FRAME_BIAS", "Off"},
                         {"FRAME_FLAT", "Off"}}) +
               ofCamera("Switch", "UPLOAD_MODE", chosen(false, "UPLOAD_CLIENT", "UPLOAD_LOCAL")) +
               ofCamera("Switch", "CCD_COMPRESSION", chosen(false, "INDI_ENABLED", "INDI_DISABLED")) +
               ofCamera("Text", "ACTIVE_DEVICES", {{"ACTIVE_TELESCOPE", "Mount"}}) +
               vector("set", "Number", kCamera, "CCD_INFO", "Idle", sensor("1280", "1024", "5.2")) +
               ofCamera("Number", "FILTER_SLOT", {{"FILTER_SLOT_VALUE", "1"}}, limits("1", "3")) +
               ofCamera("Text", "FILTER_NAME",
                        {{"FILTER_SLOT_NAME_1", "Red"},
                         {"FILTER_SLOT_NAME_2", "Green"},
                         {"FILTER_SLOT_NAME_3", ""}});
    }
    std::string blob(const std::string& bytes, const std::string& timestamp) const {
        return "<setBLOBVector device=\"" + std::string(kCamera) +
               "\" name=\"CCD1\" state=\"Ok\" timestamp=\"" + (timestamp.empty() ? stamp() : timestamp) +
               "\">\n<oneBLOB name=\"CCD1\" size=\"" + std::to_string(bytes.size()) + "\" format=\"" +
               format + "\">\n" + base64(bytes) + "\n</oneBLOB>\n</setBLOBVector>\n";
    }

    platform::VirtualTime& time_;
    platform::QueuedEventLoop& loop_;
    std::vector<std::shared_ptr<FakeConnection>> connections_;
    std::vector<std::shared_ptr<FakeConnection>> blobs_;
    std::map<std::string, bool> connected_;
    bool slewing_ = false;
    std::vector<Task> tasks_;
};

}  // namespace vantrel::test
