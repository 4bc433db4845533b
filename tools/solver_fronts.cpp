#include "solver_fronts.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <numbers>
#include <optional>
#include <set>

#include "fits/fits_error.h"
#include "pictures/picture_file.h"
#include "platform/command_line.h"
#include "platform/paths.h"
#include "platform/sexagesimal.h"
#include "platform/text.h"
#include "solve_run.h"

namespace vantrel::tools {

namespace {

namespace fs = std::filesystem;

constexpr double kWholeSky = 180;
constexpr double kDegree = std::numbers::pi / 180;

void writeText(const fs::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw BadInput(path.string() + " can't be written");
}

/// The rest of the picture's facts are in its header; without a position there either the whole sky is
/// searched.
Outcome solveAnywhere(SolveOptions options) {
    if (!options.raHours && !options.radius) options.radius = kWholeSky;
    if (!options.scale && !options.heightDeg) options.radius = kWholeSky;
    return solve(options);
}

/// Arguments of command lines that aren't ours, gone through one after the other: options, and what follows
/// them as their values.
class Arguments {
  public:
    /// The list must outlive this.
    explicit Arguments(const std::vector<std::string>& all) : all_(all) {}

    /// Goes on to what follows the last and its value; false at the end.
    bool next() {
        name_ = end_;
        if (name_ == all_.size()) return false;
        ++end_;
        return true;
    }
    const std::string& name() const { return all_[name_]; }
    /// The next argument, as a value of this one. Throws BadInput when there is none.
    const std::string& value() {
        if (end_ == all_.size()) throw BadInput(name() + " needs a value");
        return all_[end_++];
    }

  private:
    const std::vector<std::string>& all_;
    std::size_t name_ = 0, end_ = 0;
};

// ---- The first: single dashes, an .ini file beside the picture

struct IniFront {
    SolveOptions options;
    fs::path base;  ///< of the files that are written
    bool wcs = false, update = false;
};

IniFront iniFrontOf(const std::vector<std::string>& all) {
    // Those of the options that have a value and mean nothing here.
    static const std::set<std::string> kPassedOver = {"-s", "-t",     "-m",     "-z",     "-d",
                                                      "-D", "-speed", "-check", "-focus1"};
    IniFront front;
    Arguments arguments(all);
    while (arguments.next()) {
        const std::string& name = arguments.name();
        if (name == "-f") {
            front.options.file = arguments.value();
        } else if (name == "-r") {
            front.options.radius = platform::numberIn(name, arguments.value(), 0, kWholeSky);
        } else if (name == "-ra") {
            front.options.raHours = platform::numberIn(name, arguments.value(), 0, 24);
        } else if (name == "-spd") {
            front.options.dec = platform::numberIn(name, arguments.value(), 0, 180) - 90;
        } else if (name == "-fov") {
            const double height = platform::numberIn(name, arguments.value(), 0, 120);
            if (height > 0) front.options.heightDeg = height;
        } else if (name == "-o") {
            front.base = platform::pathOf(arguments.value());
        } else if (name == "-wcs") {
            front.wcs = true;
        } else if (name == "-update") {
            front.update = true;
        } else if (kPassedOver.contains(name)) {
            arguments.value();
        }
    }
    if (front.options.file.empty()) throw BadInput("-f needs to tell the picture");
    if (front.options.raHours.has_value() != front.options.dec.has_value()) {
        front.options.raHours.reset();
        front.options.dec.reset();
    }
    if (front.base.empty()) front.base = platform::pathOf(front.options.file).replace_extension();
    return front;
}

std::string valueOf(const std::vector<fits::FitsCard>& cards, const std::string& keyword) {
    for (const fits::FitsCard& card : cards)
        if (card.keyword == keyword) {
            char text[40] = {};
            std::snprintf(text, sizeof text, "%.14E", std::get<double>(card.value));
            return text;
        }
    return "";
}

std::string iniOf(const Outcome& outcome) {
    const auto cards = headerOf(outcome);
    std::string ini = "PLTSOLVD=T\n";
    for (const char* keyword : {"CRPIX1", "CRPIX2", "CRVAL1", "CRVAL2", "CD1_1", "CD1_2", "CD2_1", "CD2_2"})
        ini += std::string(keyword) + "=" + valueOf(cards, keyword) + "\n";
    // The older way to tell the same: steps along columns and rows, and the rows' turn.
    const auto cd = [&](const char* keyword) { return *platform::parseNumber(valueOf(cards, keyword)); };
    const double det = cd("CD1_1") * cd("CD2_2") - cd("CD1_2") * cd("CD2_1");
    const double step1 = std::copysign(std::hypot(cd("CD1_1"), cd("CD2_1")), det);
    const double step2 = std::hypot(cd("CD1_2"), cd("CD2_2"));
    const double turn = std::atan2(-cd("CD1_2"), cd("CD2_2")) / kDegree;
    const std::pair<const char*, double> steps[] = {
        {"CDELT1", step1}, {"CDELT2", step2}, {"CROTA1", turn}, {"CROTA2", turn}};
    for (const auto& [keyword, value] : steps) {
        char line[60] = {};
        std::snprintf(line, sizeof line, "%s=%.14E\n", keyword, value);
        ini += line;
    }
    return ini;
}

int runIniFront(const std::vector<std::string>& arguments) {
    constexpr int kSolved = 0, kNotSolved = 1, kTooFewStars = 2, kNoPicture = 16;
    constexpr std::size_t kFewest = 6;
    const IniFront front = iniFrontOf(arguments);
    const auto beside = [&](const char* ending) { return platform::withEnding(front.base, ending); };
    std::optional<Outcome> outcome;
    try {
        outcome = solveAnywhere(front.options);
    } catch (const fits::FitsError& e) {
        writeText(beside(".ini"), std::string("PLTSOLVD=F\nERROR=") + e.what() + "\n");
        return kNoPicture;
    }
    if (!outcome->solved.solution) {
        writeText(beside(".ini"), "PLTSOLVD=F\nERROR=" + outcome->solved.whyNot.english() + "\n");
        return outcome->starsFound < kFewest ? kTooFewStars : kNotSolved;
    }
    writeText(beside(".ini"), iniOf(*outcome));
    if (front.wcs) writeHeader(beside(".wcs"), headerOf(*outcome));
    const auto picture = platform::pathOf(front.options.file);
    if (front.update && pictures::kindOf(picture) == pictures::PictureKind::kFits)
        writeSolved(picture, picture, *outcome);
    return kSolved;
}

// ---- The second: double dashes, a .solved file, and a report to be read

struct FieldFront {
    std::vector<std::string> files;
    SolveOptions options;
    double low = 0, high = 0;
    std::string unit = "degwidth";
    fs::path folder, base, wcs, solved, newFits;
};

/// Degrees, or hours or degrees, minutes and seconds with colons.
double angleIn(const std::string& option, const std::string& text, double ofColons) {
    if (text.find(':') == std::string::npos) return platform::numberIn(option, text, -360, 360);
    double value = 0, unit = 1;
    const bool negative = text.front() == '-';
    for (std::size_t at = negative || text.front() == '+' ? 1 : 0; at <= text.size(); unit /= 60) {
        const std::size_t end = std::min(text.find(':', at), text.size());
        value += unit * platform::numberIn(option, text.substr(at, end - at), 0, 360);
        at = end + 1;
    }
    return (negative ? -value : value) * ofColons;
}

FieldFront fieldFrontOf(const std::vector<std::string>& all) {
    static const std::map<std::string, std::string> kShort = {
        {"-D", "--dir"},       {"-o", "--out"},        {"-W", "--wcs"},        {"-S", "--solved"},
        {"-N", "--new-fits"},  {"-3", "--ra"},         {"-4", "--dec"},        {"-5", "--radius"},
        {"-L", "--scale-low"}, {"-H", "--scale-high"}, {"-u", "--scale-units"}};
    static const std::set<std::string> kPassedOver = {"-B",
                                                      "--corr",
                                                      "-R",
                                                      "--rdls",
                                                      "-M",
                                                      "--match",
                                                      "-U",
                                                      "--index-xyls",
                                                      "-l",
                                                      "--cpulimit",
                                                      "-z",
                                                      "--downsample",
                                                      "-d",
                                                      "--depth",
                                                      "--objs",
                                                      "-t",
                                                      "--tweak-order",
                                                      "-b",
                                                      "--config",
                                                      "--backend-config",
                                                      "--sigma",
                                                      "--uniformize",
                                                      "-c",
                                                      "--code-tolerance",
                                                      "-E",
                                                      "--pixel-error",
                                                      "--odds-to-solve",
                                                      "--parity",
                                                      "-P",
                                                      "--pnm",
                                                      "-k",
                                                      "--keep-xylist",
                                                      "-i",
                                                      "--scamp",
                                                      "--axy",
                                                      "--temp-dir",
                                                      "--cancel",
                                                      "-C",
                                                      "-q",
                                                      "--quad-size-min",
                                                      "-Q",
                                                      "--quad-size-max",
                                                      "--verify",
                                                      "-V",
                                                      "--width",
                                                      "-w",
                                                      "--height",
                                                      "-e",
                                                      "--x-column",
                                                      "-X",
                                                      "--y-column",
                                                      "-Y",
                                                      "--sort-column",
                                                      "-s",
                                                      "--extension",
                                                      "--crpix-x",
                                                      "--crpix-y",
                                                      "--index-dir",
                                                      "--index-file",
                                                      "--nsigma",
                                                      "--invert-list"};
    FieldFront front;
    Arguments arguments(all);
    while (arguments.next()) {
        std::string name = arguments.name();
        std::optional<std::string> joined;
        if (const auto equals = name.find('='); name.starts_with("--") && equals != std::string::npos) {
            joined = name.substr(equals + 1);
            name.resize(equals);
        }
        if (const auto full = kShort.find(name); full != kShort.end()) name = full->second;
        const auto value = [&] { return joined ? *joined : arguments.value(); };
        if (name == "--dir") {
            front.folder = platform::pathOf(value());
        } else if (name == "--out") {
            front.base = platform::pathOf(value());
        } else if (name == "--wcs") {
            front.wcs = platform::pathOf(value());
        } else if (name == "--solved") {
            front.solved = platform::pathOf(value());
        } else if (name == "--new-fits") {
            front.newFits = platform::pathOf(value());
        } else if (name == "--ra") {
            constexpr double kDegreesAnHour = 15;
            front.options.raHours =
                std::fmod(angleIn(name, value(), kDegreesAnHour) + 360, 360) / kDegreesAnHour;
        } else if (name == "--dec") {
            front.options.dec = angleIn(name, value(), 1);
        } else if (name == "--radius") {
            front.options.radius = platform::numberIn(name, value(), 0, 360);
        } else if (name == "--scale-low") {
            front.low = platform::numberIn(name, value(), 0, 1e6);
        } else if (name == "--scale-high") {
            front.high = platform::numberIn(name, value(), 0, 1e6);
        } else if (name == "--scale-units") {
            front.unit = value();
        } else if (kPassedOver.contains(name)) {
            value();
        } else if (!name.starts_with("-")) {
            front.files.push_back(name);
        }
    }
    if (front.files.empty()) throw BadInput("no file given");
    if (front.options.raHours.has_value() != front.options.dec.has_value())
        throw BadInput("--ra and --dec go together");
    return front;
}

/// The middle of the bounds, if they are narrow enough to tell it and of a unit that does without the image's
/// size.
std::optional<double> scaleOf(const FieldFront& front) {
    const bool perPixel = front.unit == "arcsecperpix" || front.unit == "app";
    if (!perPixel || !(front.low > 0) || !(front.high >= front.low) || front.high > 2 * front.low)
        return std::nullopt;
    return std::sqrt(front.low * front.high);
}

void reportField(const Outcome& outcome) {
    const solver::SolvedPlate& s = *outcome.solved.solution;
    const solver::PlateGeometry& plate = outcome.solved.geometry;
    const auto minutes = [](double pixels, double scale) {
        return 120 * std::atan(std::tan(scale / 3600 * kDegree) * pixels / 2) / kDegree;
    };
    const auto wcs = solver::wcsOf(s, plate);
    const double down = outcome.bottomUp ? -1 : 1;
    std::printf("Field center: (RA,Dec) = (%.6f, %.6f) deg.\n", s.centre.ra, s.centre.dec);
    std::printf("Field size: %.4f x %.4f arcminutes\n", minutes(plate.width, s.orientation.scaleX),
                minutes(plate.height, std::abs(s.orientation.scaleY)));
    std::printf("Field rotation angle: up is %.6f degrees E of N\n",
                std::atan2(wcs.cd[1] * down, wcs.cd[3] * down) / kDegree);
    std::printf("Pixel scale: %.6f arcsec/pix\n",
                std::sqrt(s.orientation.scaleX * std::abs(s.orientation.scaleY)));
}

void solveField(const FieldFront& front, const std::string& file) {
    SolveOptions options = front.options;
    options.file = file;
    options.scale = scaleOf(front);
    const fs::path stem = front.base.empty() ? platform::pathOf(file).stem() : front.base;
    const fs::path base = (front.folder.empty() ? platform::pathOf(file).parent_path() : front.folder) / stem;
    const auto output = [&](const fs::path& told, const char* ending) {
        return told.empty() ? platform::withEnding(base, ending) : told;
    };
    std::printf("Reading input file \"%s\"...\n", file.c_str());
    const Outcome outcome = solveAnywhere(options);
    std::printf("%zu stars were found.\n", outcome.starsFound);
    if (!outcome.solved.solution) {
        std::printf("%s\nDid not solve (or no WCS file was written).\n",
                    outcome.solved.whyNot.english().c_str());
        return;
    }
    writeHeader(output(front.wcs, ".wcs"), headerOf(outcome));
    const auto picture = platform::pathOf(file);
    if (pictures::kindOf(picture) == pictures::PictureKind::kFits && front.newFits != "none")
        writeSolved(picture, output(front.newFits, ".new"), outcome);
    writeText(output(front.solved, ".solved"), std::string(1, '\1'));
    reportField(outcome);
}

int runFieldFront(const std::vector<std::string>& arguments) {
    const FieldFront front = fieldFrontOf(arguments);
    for (const std::string& file : front.files) solveField(front, file);
    return 0;
}

}  // namespace

Front frontNamed(const std::string& program) {
    if (program == "astap" || program == "astap_cli") return runIniFront;
    if (program == "solve-field") return runFieldFront;
    return nullptr;
}

}  // namespace vantrel::tools
