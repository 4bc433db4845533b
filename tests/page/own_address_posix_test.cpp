// What a page asks of the machine.
#include <gmock/gmock.h>

#include "page/own_address.h"
#include "page/secret.h"

namespace vantrel::page {
namespace {

TEST(OwnAddresses, AreThoseOfTheInterfacesThatAreUp) {
    std::vector<std::string> hosts;
    for (const OwnAddress& own : ownAddresses()) hosts.push_back(own.host);
    EXPECT_THAT(hosts, testing::Contains("127.0.0.1"));
}

TEST(SystemSecret, IsAnotherEachTime) { EXPECT_NE(systemSecret(), systemSecret()); }

}  // namespace
}  // namespace vantrel::page
