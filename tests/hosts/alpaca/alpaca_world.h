// Alpaca devices with everything around them, in virtual time, and a server that lies, dies and comes back as
// a test wishes.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "hosts/alpaca/client.h"
#include "hosts/alpaca/device_error.h"
#include "hosts/alpaca/image_messages.h"
#include "hosts/alpaca/json.h"
#include "hosts/alpaca/surroundings.h"
#include "hosts/fake_http.h"
#include "platform/outside_call.h"
#include "platform/queued_event_loop.h"

namespace vantrel::test {

/// What goes wrong with one member, or with all.
enum class Fault {
    kNone,
    kRefused,      // nobody listens
    kSilence,      // no answer at all
    kCut,          // the connection ends in the middle
    kTooMuch,      // a body without end
    kNotFound,     // 404, as JSON
    kServerFault,  // 500
    kWebPage,      // HTML
    kNoJson,
    kNoValue,      // an object without the value
    kWrongType,    // a text in place of whatever it should be
    kDeviceError,  // the driver's own
    kNotImplemented,
    kNotConnected,
};

struct Request {
    bool isPut = false;
    std::string path;  // "telescope/0/slewing", "management/v1/description"
    std::map<std::string, std::string> parameters;

    std::string text() const {
        std::string line = (isPut ? "PUT " : "GET ") + path;
        char sign = '?';
        for (const auto& [name, value] : parameters) {
            if (name == "ClientID" || name == "ClientTransactionID") continue;
            line += sign + name + "=" + value;
            sign = '&';
        }
        return line;
    }
};

class FakeServer {
  public:
    using Json = hosts::alpaca::Json;

    struct Listed {
        std::string name, type;
        int number;
        std::string id;
    };
    /// The devices that it lists.
    void list(const std::vector<Listed>& devices) {
        Json& all = values["management/v1/configureddevices"] = Json::array();
        for (const auto& [name, type, number, id] : devices)
            all.push_back(
                {{"DeviceName", name}, {"DeviceType", type}, {"DeviceNumber", number}, {"UniqueID", id}});
    }
    /// Gives a device ("camera/2/") members, as a JSON object tells them. It is connected by the property.
    void fill(const std::string& device, const char* members) {
        const Json given = Json::parse(members);
        for (const auto& [name, value] : given.items()) values[device + name] = value;
        commands[device + "connected"] = [this, device](const Request& put) {
            values[device + "connected"] = put.parameters.at("Connected") == "True";
        };
    }
    /// These commands are taken, and do nothing.
    void take(const std::string& device, const std::vector<const char*>& names) {
        for (const char* name : names) commands[device + name] = [](const Request&) {};
    }

    /// By path; a value that isn't here is an unknown member.
    std::map<std::string, Json> values;
    /// What a PUT does, beside being written down. Members that take none are unknown.
    std::map<std::string, std::function<void(const Request&)>> commands;
    /// By path, for commands with "PUT " before it; "" for all.
    std::map<std::string, Fault> faults;
    std::string refuses;  // a request as a line, whose answer is the driver's error
    std::map<std::string, platform::Milliseconds> delays;
    /// An answer in place of JSON, for pictures.
    std::map<std::string, std::function<platform::HttpAnswer()>> raw;

    std::vector<Request> requests;

    /// The requests as lines, without the GETs when only commands matter.
    std::vector<std::string> commandLines() const {
        std::vector<std::string> lines;
        for (const Request& request : requests)
            if (request.isPut) lines.push_back(request.text());
        return lines;
    }

    FakeReply answer(const platform::HttpRequest& http) {
        const Request request = requestOf(http);
        requests.push_back(request);
        const std::string key = (request.isPut ? "PUT " : "") + request.path;
        Fault fault = Fault::kNone;
        if (faults.contains(key)) fault = faults[key];
        if (faults.contains("")) fault = faults[""];
        if (request.text() == refuses) fault = Fault::kDeviceError;
        FakeReply reply;
        if (delays.contains(key)) reply.after = delays[key];
        reply.outcome = outcomeOf(request, fault);
        reply.never = fault == Fault::kSilence;
        return reply;
    }

  private:
    static Request requestOf(const platform::HttpRequest& http) {
        Request request;
        request.isPut = http.method == platform::HttpRequest::Method::kPut;
        std::string rest = http.url.substr(http.url.find('/', 7) + 1);
        const auto query = rest.find('?');
        std::string parameters = request.isPut                ? http.form
                                 : query == std::string::npos ? ""
                                                              : rest.substr(query + 1);
        request.path = rest.substr(0, query);
        if (request.path.starts_with("api/v1/")) request.path = request.path.substr(7);
        while (!parameters.empty()) {
            const std::string one = parameters.substr(0, parameters.find('&'));
            parameters.erase(0, one.size() + 1);
            request.parameters[one.substr(0, one.find('='))] = one.substr(one.find('=') + 1);
        }
        return request;
    }

    hosts::HttpOutcome outcomeOf(const Request& request, Fault fault) {
        using platform::HttpAnswer;
        using platform::HttpError;
        using Kind = HttpError::Kind;
        const auto error = [&](int number, const std::string& words) {
            return whole(request, {{"ErrorNumber", number}, {"ErrorMessage", words}, {"Value", nullptr}});
        };
        switch (fault) {
            case Fault::kNone:
                break;
            case Fault::kSilence:
                return HttpError(Kind::kTimedOut, "silence");
            case Fault::kRefused:
                return HttpError(Kind::kUnreachable, "Connection refused");
            case Fault::kCut:
                return HttpError(Kind::kBroken, "transfer closed");
            case Fault::kTooMuch:
                return HttpError(Kind::kTooLarge, "too much");
            case Fault::kNotFound:
                return HttpAnswer{404, "application/json", R"({"detail":"Not Found"})"};
            case Fault::kServerFault:
                return HttpAnswer{500, "text/plain", "Traceback:\nKeyError"};
            case Fault::kWebPage:
                return HttpAnswer{200, "text/html", "<html><body>Router</body></html>"};
            case Fault::kNoJson:
                return HttpAnswer{200, "application/json", "{\"Value\": tru"};
            case Fault::kNoValue:
                return whole(request, {{"ErrorNumber", 0}, {"ErrorMessage", ""}});
            case Fault::kWrongType:
                return whole(request, {{"Value", "elephant"}, {"ErrorNumber", 0}});
            case Fault::kDeviceError:
                return error(0x512, "The gears are stuck");
            case Fault::kNotImplemented:
                return error(1024, "");
            case Fault::kNotConnected:
                return error(1031, "Not connected");
        }
        if (!request.isPut && raw.contains(request.path)) return raw[request.path]();
        if (request.isPut) {
            if (!commands.contains(request.path)) return HttpAnswer{404, "text/plain", "no such method"};
            commands[request.path](request);
            return whole(request, {{"ErrorNumber", 0}, {"ErrorMessage", ""}});
        }
        if (!values.contains(request.path)) return HttpAnswer{404, "text/plain", "no such member"};
        return whole(request, {{"Value", values[request.path]}, {"ErrorNumber", 0}, {"ErrorMessage", ""}});
    }

    platform::HttpAnswer whole(const Request& request, Json object) {
        const auto given = request.parameters.find("ClientTransactionID");
        object["ClientTransactionID"] = given == request.parameters.end() ? 0 : std::stoi(given->second);
        object["ServerTransactionID"] = ++transaction_;
        return {200, "application/json; charset=utf-8", object.dump()};
    }

    int transaction_ = 0;
};

/// A mount and a camera at a server that do as they are told, one after the other if need be.
class Instruments {
  public:
    explicit Instruments(platform::QueuedEventLoop& loop) : loop_(loop) {}

    void addMount(FakeServer& server) {
        server.fill("telescope/0/", R"({
            "interfaceversion": 3, "connected": false, "equatorialsystem": 1, "rightascension": 5.25,
            "declination": 40.5, "siderealtime": 7.5, "sitelatitude": 50, "sitelongitude": -10.5,
            "slewing": false, "tracking": true, "canslew": true, "canslewasync": true, "atpark": false})");
        server.commands["telescope/0/tracking"] = [&server](const Request& put) {
            server.values["telescope/0/tracking"] = put.parameters.at("Tracking") == "True";
        };
        server.commands["telescope/0/slewtocoordinatesasync"] = [this, &server](const Request& put) {
            slewTo(server, std::stod(put.parameters.at("RightAscension")),
                   std::stod(put.parameters.at("Declination")));
        };
        server.commands["telescope/0/abortslew"] = [this, &server](const Request&) { stop(server); };
    }
    /// Its pictures have 2 x 2 pixels.
    void addCamera(FakeServer& server) {
        server.fill("camera/0/", R"({
            "interfaceversion": 3, "connected": false, "cameraxsize": 4, "cameraysize": 6, "pixelsizex": 3.8,
            "pixelsizey": 3.8, "maxbinx": 2, "maxbiny": 2, "canasymmetricbin": false, "exposuremin": 0.001,
            "exposuremax": 3600, "ccdtemperature": -9.5, "gain": 100, "offset": 10, "sensortype": 0,
            "cansetccdtemperature": true, "canabortexposure": true, "canstopexposure": true,
            "imageready": false, "camerastate": 0, "lastexposurestarttime": "2026-11-24T20:00:01.25",
            "lastexposureduration": 2.001})");
        server.take("camera/0/", {"binx", "biny", "startx", "starty", "numx", "numy", "gain", "offset",
                                  "setccdtemperature", "cooleron"});
        server.commands["camera/0/startexposure"] = [this, &server](const Request& put) {
            server.values["camera/0/imageready"] = false;
            server.values["camera/0/camerastate"] = 2;
            const double seconds = std::stod(put.parameters.at("Duration"));
            exposing = loop_.after(platform::Milliseconds{static_cast<int>(seconds * 1000) + 500}, [&server] {
                server.values["camera/0/imageready"] = true;
                server.values["camera/0/camerastate"] = 0;
            });
        };
        for (const char* name : {"camera/0/abortexposure", "camera/0/stopexposure"})
            server.commands[name] = [this, &server](const Request&) { rest(server); };
        server.raw["camera/0/imagearray"] = [] {
            return platform::HttpAnswer{
                200, "application/imagebytes",
                imageBytes(hosts::alpaca::Element::kUInt16, 2, 2, std::vector<std::uint16_t>{1, 2, 3, 4})};
        };
    }
    void stop(FakeServer& server) {
        slewing.reset();
        server.values["telescope/0/slewing"] = false;
    }
    void rest(FakeServer& server) {
        exposing.reset();
        server.values["camera/0/camerastate"] = 0;
    }

    /// How the mount slews: in four seconds, unless a test knows better.
    std::function<void(FakeServer&, double, double)> slewTo = [this](FakeServer& server, double ra,
                                                                     double dec) {
        server.values["telescope/0/slewing"] = true;
        slewing = loop_.after(platform::Milliseconds{4000}, [this, &server, ra, dec] {
            server.values["telescope/0/rightascension"] = ra;
            server.values["telescope/0/declination"] = dec;
            stop(server);
        });
    };
    platform::TimerHandle slewing, exposing;

  private:
    platform::QueuedEventLoop& loop_;
};

// ---- devices with everything around them

/// Datagrams that arrive after their time, once somebody asked.
struct FakeDatagram {
    platform::Milliseconds after;
    hosts::UdpAnswer answer;
};

class AlpacaWorld {
  public:
    AlpacaWorld() {
        http.answer = [this](const platform::HttpRequest& request) {
            const std::string place = request.url.substr(7, request.url.find('/', 7) - 7);
            if (!servers.contains(place))
                return FakeReply{platform::HttpError(platform::HttpError::Kind::kUnreachable, "nobody"),
                                 platform::Milliseconds{2}};
            return servers[place].answer(request);
        };
    }

    platform::Milliseconds now() const { return time.sinceStart(); }

    /// The line that was told and has this in it; empty when there is none.
    std::string told(const std::string& part) const {
        for (const std::string& line : lines)
            if (line.find(part) != std::string::npos) return line;
        return "";
    }

    platform::VirtualTime time{platform::parseInstant("2026-11-24T20:00:00Z").value()};
    platform::QueuedEventLoop loop{time};
    platform::OutsideCalls calls;
    bool stopped = false;
    FakeHttp http{loop};
    std::map<std::string, FakeServer> servers;  // by "host:port"
    hosts::alpaca::Client client{http, hosts::PumpedWait(loop, calls, [this] { return stopped; }), 17};
    platform::BackgroundOfLoop background{loop};
    std::vector<FakeDatagram> datagrams;
    std::vector<hosts::UdpQuestion> searches;
    std::vector<std::string> pages;
    std::vector<std::string> lines;

    hosts::alpaca::Surroundings surroundings{
        .loop = loop,
        .client = client,
        .background = background,
        .search =
            [this](const hosts::UdpQuestion& question) {
                searches.push_back(question);
                return std::make_unique<Search>(*this);
            },
        .discoveryPort = [] { return 32227; },
        // As if J2000 lay 0.1 hours and 1 degree below.
        .equinox = {.toDate = [](const auto& j2000, auto) -> hosts::MountPosition {
                        return {j2000.rightAscension + 0.1, j2000.declination + 1};
                    },
                    .toJ2000 = [](const auto& ofDate, auto) -> hosts::MountPosition {
                        return {ofDate.rightAscension - 0.1, ofDate.declination - 1};
                    }},
        .openPage =
            [this](const std::string& page) {
                pages.push_back(page);
                return true;
            },
        .tell = [this](const std::string& line) { lines.push_back(line); }};

  private:
    class Search : public hosts::UdpSearch {
      public:
        explicit Search(AlpacaWorld& world) : world_(world), start_(world.now()) {}
        std::vector<hosts::UdpAnswer> answers() override {
            std::vector<hosts::UdpAnswer> arrived;
            for (;
                 given_ < world_.datagrams.size() && world_.datagrams[given_].after <= world_.now() - start_;
                 ++given_)
                arrived.push_back(world_.datagrams[given_].answer);
            return arrived;
        }

      private:
        AlpacaWorld& world_;
        platform::Milliseconds start_;
        std::size_t given_ = 0;
    };
};

}  // namespace vantrel::test
