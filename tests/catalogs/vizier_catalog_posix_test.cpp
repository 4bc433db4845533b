#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "catalogs/http_downloads.h"
#include "catalogs/page_cache.h"
#include "catalogs/vizier_catalog.h"
#include "catalogs/vizier_table.h"
#include "sky/tangent_wcs.h"
#include "support/catalog_trees.h"
#include "support/refusal.h"
#include "support/scripted_server.h"
#include "support/temp_folder.h"

namespace vantrel::catalogs {
namespace {

using sky::CatalogError;
using testing::HasSubstr;
using namespace std::chrono_literals;
using test::httpAnswer;

const std::string kPreamble =
    "#\n#   VizieR Astronomical "
    "Server\n#INFO\tservice_protocol=ASU\n\n#RESOURCE=yCat_1284\n#Table\tI_284_out:\n"
    "#Column\tRAJ2000\t(F10.6)\tRight ascension\t[ucd=pos.eq.ra]\n";

std::string answer(const std::string& rows) {
    return kPreamble +
           "RAJ2000\tDEJ2000\tpmRA\tpmDE\tB1mag\tR1mag\tB2mag\tR2mag\tImag\n"
           "deg\tdeg\tmas/yr\tmas/yr\tmag\tmag\tmag\tmag\tmag\n"
           "----------\t----------\t------\t------\t-----\t-----\t-----\t-----\t-----\n" +
           rows + "\n#END# -ref=VOTABLE\n";
}

/// The value of an argument of an address, with the escapes that occur in it undone.
std::string argument(const std::string& url, const std::string& name) {
    const auto start = url.find(name + "=");
    if (start == std::string::npos) return "";
    std::string value = url.substr(start + name.size() + 1);
    value = value.substr(0, value.find('&'));
    for (const auto& [code, text] :
         std::map<std::string, std::string>{{"%20", " "}, {"%2B", "+"}, {"%3C", "<"}})
        for (auto at = value.find(code); at != std::string::npos; at = value.find(code))
            value.replace(at, 3, text);
    return value;
}

/// Plays the service: all stars in the circle that it is asked for, or whatever a test wants.
class FakeService : public Downloads {
  public:
    std::string fetch(const std::string& url, const KeepGoing& keepGoing) override {
        asked.push_back(url);
        if (!keepGoing()) throw DownloadGivenUp("the download was given up");
        if (!problem.empty()) throw DownloadError(problem);
        return fixedAnswer.empty() ? answer(rowsFor(url)) : fixedAnswer;
    }

    test::TreeStars stars;
    std::string fixedAnswer;
    std::string problem;
    std::vector<std::string> asked;

  private:
    std::string rowsFor(const std::string& url) const {
        double ra = 0;
        double dec = 0;
        std::istringstream(argument(url, "-c")) >> ra >> dec;
        const double radius = std::stod(argument(url, "-c.rd"));
        std::string rows;
        for (const auto& star : stars) {
            if (sky::separationDeg({star.ra, star.dec}, {ra, dec}) > radius) continue;
            rows += test::formatted("%10.6f\t%+10.6f\t%6.0f\t%6.0f\t%5.2f\t%5.2f\t     \t     \t     \n",
                                    star.ra, star.dec, star.pmRa, star.pmDec, star.magnitude, star.magnitude);
        }
        return rows;
    }
};

class VizierCatalogTest : public testing::Test {
  protected:
    VizierCatalog catalog() {
        return {usnoBSource(), {service_, folder_ / "cache", [this] { return goOn_; }}};
    }

    std::string failure() {
        return test::refusalOf<CatalogError>(
            [&] { catalog().cone({.raDeg = 10, .decDeg = 20, .radiusDeg = 0.5}); });
    }

    test::TempFolder folder_;
    std::shared_ptr<FakeService> service_ = std::make_shared<FakeService>();
    bool goOn_ = true;
};

TEST_F(VizierCatalogTest, AsksInTheServicesOwnWords) {
    catalog().cone(
        {.raDeg = 83.63, .decDeg = 22.01, .radiusDeg = 0.8, .faintestMagnitude = 13.2, .maxStars = 500});
    ASSERT_EQ(service_->asked.size(), 1U);
    const std::string url = service_->asked.front();
    EXPECT_THAT(url, testing::StartsWith("https://vizier.cds.unistra.fr/viz-bin/asu-tsv?-source=I/284/out&"));
    EXPECT_THAT(url, testing::MatchesRegex(".*-c=83\\.[0-9]*%20%2B22\\.[0-9]*&.*"));
    for (const auto& [name, value] :
         {std::pair{"-c.eq", "J2000"}, {"R1mag", "<15"}, {"-sort", "R1mag"}, {"-out.max", "3000"}})
        EXPECT_EQ(argument(url, name), value);
    EXPECT_THAT(url, HasSubstr("&-out=RAJ2000&-out=DEJ2000&-out=pmRA&-out=pmDE&"));
}

TEST_F(VizierCatalogTest, GivesEveryStarOfTheCircleWhereverItIs) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> unit(0, 1);
    for (const double dec : {0.0, 20.03, -61.4, 87.2, 89.5, 89.93, -90.0}) {
        for (const double ra : {0.01, 133.3, 359.97}) {
            for (const double radius : {0.05, 0.7, 2.9}) {
                service_->stars.clear();
                for (int i = 0; i < 100; ++i) {
                    const double angle = 2 * std::numbers::pi * unit(random);
                    const double reach = radius * std::sqrt(unit(random));
                    const auto place =
                        sky::fromTangentPlane({reach * std::cos(angle), reach * std::sin(angle)}, {ra, dec});
                    service_->stars.push_back({place.ra, place.dec, 10});
                }
                const auto found = catalog().cone({.raDeg = ra, .decDeg = dec, .radiusDeg = radius + 1e-5});
                EXPECT_EQ(found.size(), 100U) << ra << " " << dec << " " << radius;
                std::filesystem::remove_all(folder_ / "cache");
            }
        }
    }
}

TEST_F(VizierCatalogTest, ReadsMagnitudesAndMotions) {
    service_->fixedAnswer = answer(
        " 10.000000\t+20.000000\t   100\t  -200\t12.00\t11.00\t     \t     \t     \n"
        " 10.010000\t+20.000000\t     0\t     0\t     \t     \t13.00\t12.00\t11.50\n"
        " 10.020000\t+20.000000\t      \t      \t     \t     \t     \t     \t14.50\n"
        " 10.030000\t+20.000000\t     0\t     0\t     \t     \t     \t     \t\n");
    const auto stars = catalog().cone(
        {.raDeg = 10, .decDeg = 20, .radiusDeg = 0.5, .epochYear = 2100, .brightestFirst = true});
    ASSERT_EQ(stars.size(), 3U) << "a star without any magnitude is of no use";
    EXPECT_NEAR(stars[0].raDeg, 10 + 10.0 / 3600 / std::cos(20 * std::numbers::pi / 180), 1e-6);
    EXPECT_NEAR(stars[0].decDeg, 20 - 20.0 / 3600, 1e-6);
    EXPECT_NEAR(stars[0].magnitude, 11.36, 1e-9);
    EXPECT_NEAR(stars[1].magnitude, 12.36, 1e-9);
    EXPECT_NEAR(stars[2].magnitude, 14.5, 1e-9);
}

TEST_F(VizierCatalogTest, NomadTakesTheNextBandForAMissingOne) {
    service_->fixedAnswer =
        kPreamble +
        "RAJ2000\tDEJ2000\tpmRA\tpmDE\tBmag\tVmag\tRmag\tJmag\n\n---\t---\t---\t---\t--\t--\t--\t--\n"
        "10.0\t20.0\t0\t0\t12.0\t11.0\t10.0\t9.0\n10.1\t20.0\t0\t0\t12.0\t\t10.5\t9.0\n"
        "10.2\t20.0\t0\t0\t12.0\t\t\t9.0\n10.3\t20.0\t0\t0\t\t\t\t9.0\n";
    const VizierCatalog nomad(nomadSource(), {service_, {}, [] { return true; }});
    std::vector<double> magnitudes;
    for (const auto& star : nomad.cone({.raDeg = 10, .decDeg = 20, .radiusDeg = 1}))
        magnitudes.push_back(star.magnitude);
    EXPECT_THAT(magnitudes, testing::ElementsAre(11.0, 10.5, 12.0, 9.0));
    EXPECT_THAT(service_->asked.front(), HasSubstr("-source=I/297/out&"));
}

TEST_F(VizierCatalogTest, AsksOnceForSearchesNearOneAnother) {
    service_->stars = {{10, 20, 9}};
    const sky::ConeQuery query{.raDeg = 10.01, .decDeg = 20.01, .radiusDeg = 0.60};
    ASSERT_EQ(catalog().cone(query).size(), 1U);
    sky::ConeQuery near = query;
    near.raDeg += 0.003;
    near.radiusDeg = 0.61;
    EXPECT_EQ(catalog().cone(near).size(), 1U);
    EXPECT_EQ(service_->asked.size(), 1U);

    // What was kept serves without a network as well; a page that was damaged doesn't.
    service_->problem = "Couldn't resolve host name";
    EXPECT_EQ(catalog().cone(query).size(), 1U);
    for (const auto& page : std::filesystem::directory_iterator(folder_ / "cache")) {
        const std::string text = test::contentsOf(page.path());
        std::ofstream(page.path()) << text.substr(0, text.find('\n') + 100);
    }
    EXPECT_THROW(catalog().cone(query), CatalogError);
}

TEST_F(VizierCatalogTest, SaysWhyThereAreNoStars) {
    service_->problem = "Couldn't resolve host name";
    EXPECT_EQ(failure(),
              "the star catalogue USNO-B-Net can't be reached over the network: Couldn't resolve host name");
    ASSERT_EQ(service_->asked.size(), 2U) << "the mirror is asked, too";
    EXPECT_THAT(service_->asked.back(), HasSubstr("vizier.cfa.harvard.edu"));
    service_->problem.clear();
    for (const auto& [given, says] :
         {std::pair<std::string, const char*>{"#INFO\tQUERY_STATUS=ERROR\n#***Table not found\n",
                                              "***Table not found"},
          {"<html>\n<body>Sorry</body>\n</html>\n", "holds no table: <html>"},
          {answer("10.0\tnorth\t0\t0\t9.0\t9.0\n"), "\"north\" in the place of a number"},
          {answer("10.0\t95.0\t0\t0\t9.0\t9.0\n"), "a position that is none"}}) {
        service_->fixedAnswer = given;
        EXPECT_THAT(failure(), HasSubstr(says));
    }
    goOn_ = false;
    service_->asked.clear();
    EXPECT_EQ(failure(), "the star catalogue USNO-B-Net was not waited for");
    EXPECT_EQ(service_->asked.size(), 1U) << "who closes the program doesn't wait for the mirror";
    service_.reset();
    EXPECT_THAT(failure(), HasSubstr("needs the network"));
}

TEST(VizierTable, EndsWhereTheTableEnds) {
    const std::string head = "a\tb\n\t\n--\t--\n";
    const struct {
        const char* why;
        std::string text;
        std::size_t rows;
    } cases[] = {
        {"end of the text", head + "1\t2\n3\t4", 2},
        {"no rows", head, 0},
        {"empty line", head + "1\t2\n\n3\t4\n", 1},
        {"comment", head + "1\t2\n#INFO\n3\t4\n", 1},
        {"line ends of other systems", "a\tb\r\n\t\r\n--\t--\r\n1\t2\r\n", 1},
        {"rows with less and more fields", head + "1\n1\t2\t3\n", 2},
    };
    for (const auto& c : cases) {
        const VizierTable table(c.text);
        std::size_t rows = 0;
        table.eachRow([&](const VizierTable::Row& row) {
            ++rows;
            EXPECT_TRUE(row.number(table.column("a"))) << c.why;
            EXPECT_EQ(row.number(table.column("c")), std::nullopt) << c.why;
        });
        EXPECT_EQ(rows, c.rows) << c.why;
    }
}

TEST(VizierTable, HasAnEnd) {
    const std::string head = "a\tb\n\t\n--\t--\n";
    const auto repeated = [](const std::string& text, int times) {
        std::string all;
        for (int i = 0; i < times; ++i) all += text;
        return all;
    };
    const struct {
        const char* why;
        std::string text;
        const char* says;
    } cases[] = {
        {"a row without end", head + repeated("1\t", 1'000'000), "a line without end"},
        {"names without end", repeated("a\t", 1'000'000) + "\n\n--\n1\n", "a line without end"},
        {"rows without end", head + repeated("1\t2\n", 300'000), "more rows than it may"},
    };
    for (const auto& c : cases) {
        std::size_t rows = 0;
        const std::string refusal = test::refusalOf<CatalogError>(
            [&] { VizierTable(c.text).eachRow([&](const VizierTable::Row&) { ++rows; }); });
        EXPECT_THAT(refusal, HasSubstr(c.says)) << c.why;
        EXPECT_LE(rows, 250'000U) << c.why;
    }
}

TEST(PageCache, ForgetsTheOldestBeyondItsSize) {
    const test::TempFolder folder;
    const PageCache cache(folder / "pages", 1000);
    for (const char* question : {"one", "two", "three"}) {
        cache.keep(question, std::string(400, 'x'));
        for (const auto& page : std::filesystem::directory_iterator(folder / "pages"))
            std::filesystem::last_write_time(page.path(), page.last_write_time() - std::chrono::hours(1));
    }
    EXPECT_EQ(cache.find("one"), std::nullopt);
    EXPECT_EQ(cache.find("two"), std::string(400, 'x'));
    EXPECT_EQ(cache.find("three"), std::string(400, 'x'));
    EXPECT_EQ(PageCache({}).find("one"), std::nullopt);
}

TEST(PageCache, WaitsForNobody) {
    const test::TempFolder folder;
    const PageCache cache(folder.path());
    cache.keep("one", "x");
    const auto page = std::filesystem::directory_iterator(folder.path())->path();
    std::filesystem::remove(page);
    ASSERT_EQ(::mkfifo(page.c_str(), 0600), 0);
    EXPECT_EQ(cache.find("one"), std::nullopt);
}

// ---- downloads

/// The server answers in the pauses in which a download asks whether to go on.
class HttpDownloadsTest : public testing::Test {
  protected:
    std::string fetch() {
        return downloads_.fetch(server_.url(), [this] {
            server_.serve();
            return goOn_;
        });
    }
    std::string failure() {
        return test::refusalOf<DownloadError>([this] { fetch(); });
    }

    test::ScriptedServer server_;
    HttpDownloads downloads_{{.body = 100'000, .connecting = 5s, .whole = 20s, .drip = {}}};
    bool goOn_ = true;
};

TEST_F(HttpDownloadsTest, BringsADocumentThatHasMovedAndNoOtherMeanwhile) {
    server_.scripts = {{{httpAnswer("", "302 Found", "Location: /there\r\n")}}, {{httpAnswer("stars")}}};
    std::string second;
    const std::string first = downloads_.fetch(server_.url(), [&] {
        if (second.empty()) second = failure();
        server_.serve();
        return true;
    });
    EXPECT_EQ(first, "stars");
    EXPECT_EQ(second, "another download is running");
}

TEST_F(HttpDownloadsTest, SaysWhyThereIsNone) {
    server_.scripts = {{{httpAnswer("no such table", "404 Not Found")}}};
    EXPECT_EQ(failure(), "the server refused with 404");
    server_.scripts.push_back({{"HTTP/1.1 200 OK\r\n\r\n"}, std::string(10'000, 'x')});
    EXPECT_NE(failure(), "") << "a body without end";
    goOn_ = false;
    EXPECT_THROW(fetch(), DownloadGivenUp);
}

}  // namespace
}  // namespace vantrel::catalogs
