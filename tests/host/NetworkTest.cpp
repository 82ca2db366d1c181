// What the host adapter finds out of the network around it: interfaces, neighbours, ping, silence.
#include "Fields.h"
#include "OpenPort.h"
#include "Sandbox.h"

#include <sched.h>

#include <cstdlib>
#include <string>

namespace
{

using namespace std::chrono_literals;

PingRequest pingOf(const std::string &address)
{
    return {makeAddress(address), 2, {}, 3s};
}

TEST(Network, AdaptersAreTheInterfacesThatAreNamed)
{
    setenv("TAVO_ADAPTER_INTERFACES", "nonsense,lo", 1);
    const auto loopback = findModel(0);
    ASSERT_TRUE(loopback);
    EXPECT_EQ(loopback->deviceName, "lo");
    EXPECT_EQ(loopback->key, "lo");
    EXPECT_EQ(loopback->model, "loopback interface");
    EXPECT_FALSE(findModel(1));
    unsetenv("TAVO_ADAPTER_INTERFACES");
    for (SD_UINT32 index = 0; const auto model = findModel(index); ++index) {
        EXPECT_NE(model->deviceName, "lo");
    }
    EXPECT_TRUE(getText(factorySettings(*loopback).block.iSCSIName).starts_with("iqn."));
}

TEST(Network, PingIsAnsweredOrNot)
{
    const OpenPort port;
    const PingResult answer = port->ping(pingOf("127.0.0.1"));
    if (answer == PingResult::notSupported) {
        GTEST_SKIP() << "this user may send no ICMP";
    }
    EXPECT_EQ(answer, PingResult::answered);
    EXPECT_EQ(port->ping(pingOf("::1")), PingResult::answered);
    EXPECT_EQ(toText(port->addresses()->address), "127.0.0.1");
}

// What only a network of its own shows: runs in a process that has one, with a neighbour at the other end of a cable
// who takes everything and says nothing.
void inOwnNetwork(const std::function<void(const OpenPort &)> &check)
{
    const auto make = [] {
        return unshare(CLONE_NEWNET) == 0
               && std::system("{ ip link set lo up && ip link add name near type veth peer name far"
                              " && ip link add name bridge type bridge && ip link set far master bridge"
                              " && ip link set far up && ip link set bridge up && ip link set near up"
                              " && ip address add 10.9.0.1/20 dev near && ip route add default via 10.9.0.2"
                              " && ip neighbour add 10.9.0.2 lladdr 02:00:00:00:00:09 dev near nud permanent"
                              " && ip neighbour add fd09::2 lladdr 02:00:00:00:00:0a dev near nud permanent"
                              "; } 2>/dev/null")
                      == 0;
    };
    inChild(make, [&] { check(OpenPort("near")); });
}

TEST(Network, NeighboursAreTheKernels)
{
    inOwnNetwork([](const OpenPort &port) {
        const auto table = port->neighbours();
        ASSERT_TRUE(table && table->size() == 2);
        EXPECT_EQ(toText((*table)[0].ipAddr), "10.9.0.2");
        EXPECT_EQ((*table)[0].macAddr[5], 0x09);
        EXPECT_EQ(toText((*table)[1].ipAddr), "fd09::2");
        EXPECT_EQ((*table)[1].macAddr[5], 0x0A);
        const auto addresses = port->addresses();
        EXPECT_EQ(toText(addresses->address), "10.9.0.1");
        EXPECT_EQ(toText(addresses->subnetMask), "255.255.240.0");
        EXPECT_EQ(toText(addresses->gateway), "10.9.0.2");
        EXPECT_TRUE(port->linkUp());
        EXPECT_EQ(port->ping(pingOf("10.9.0.2")), PingResult::silent);
    });
}

TEST(Network, NoAnswerIsUnreachableWithinTheDeadline)
{
    inOwnNetwork([](const OpenPort &port) {
        SessionRequest request = requestFor(3260, "iqn.2024-01.example:nobody", 500ms);
        // Somebody who does not answer, nobody, a host behind a router, one without a route to it.
        for (const char *address : {"10.9.0.2", "10.9.0.7", "10.10.0.1", "fd0a::1"}) {
            request.target.address = makeAddress(address);
            const auto ask = [&] {
                EXPECT_EQ(port.reach(request), Reach::unreachable) << address;
                EXPECT_EQ(port->discover(request).login.reach, Reach::unreachable) << address;
            };
            EXPECT_LT(timeOf(ask), 2 * request.deadline + 500ms) << address;
        }
    });
}

} // namespace
