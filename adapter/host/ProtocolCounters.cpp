// Counters from procfs, see ProtocolCounters.h.
#include "ProtocolCounters.h"

#include <fstream>
#include <map>
#include <sstream>

namespace
{

struct Source {
    SD_UINT64 HBAPORTSTATISCSI::*counter;
    const char *name;
};

// Names in /proc/net/snmp and /proc/net/netstat (with the prefix of their line) and in /proc/net/snmp6. Counters with
// several names are sums.
constexpr Source SOURCES[] = {
    {&HBAPORTSTATISCSI::IPTxPacketsCount, "Ip:OutRequests"},
    {&HBAPORTSTATISCSI::IPTxPacketsCount, "Ip6OutRequests"},
    {&HBAPORTSTATISCSI::IPTxBytesCount, "IpExt:OutOctets"},
    {&HBAPORTSTATISCSI::IPTxBytesCount, "Ip6OutOctets"},
    {&HBAPORTSTATISCSI::IPTxFragmentsCount, "Ip:FragCreates"},
    {&HBAPORTSTATISCSI::IPTxFragmentsCount, "Ip6FragCreates"},
    {&HBAPORTSTATISCSI::IPRxPacketsCount, "Ip:InReceives"},
    {&HBAPORTSTATISCSI::IPRxPacketsCount, "Ip6InReceives"},
    {&HBAPORTSTATISCSI::IPRxBytesCount, "IpExt:InOctets"},
    {&HBAPORTSTATISCSI::IPRxBytesCount, "Ip6InOctets"},
    {&HBAPORTSTATISCSI::IPRxFragmentsCount, "Ip:ReasmReqds"},
    {&HBAPORTSTATISCSI::IPRxFragmentsCount, "Ip6ReasmReqds"},
    {&HBAPORTSTATISCSI::IPDatagramReassemblyCount, "Ip:ReasmOKs"},
    {&HBAPORTSTATISCSI::IPDatagramReassemblyCount, "Ip6ReasmOKs"},
    {&HBAPORTSTATISCSI::IPRxPacketErrorCount, "Ip:InHdrErrors"},
    {&HBAPORTSTATISCSI::IPRxPacketErrorCount, "Ip:InAddrErrors"},
    {&HBAPORTSTATISCSI::IPRxPacketErrorCount, "Ip6InHdrErrors"},
    {&HBAPORTSTATISCSI::IPRxPacketErrorCount, "Ip6InAddrErrors"},
    {&HBAPORTSTATISCSI::IPReassemblyErrorCount, "Ip:ReasmFails"},
    {&HBAPORTSTATISCSI::IPReassemblyErrorCount, "Ip6ReasmFails"},
    {&HBAPORTSTATISCSI::TCPTxSegmentsCount, "Tcp:OutSegs"},
    {&HBAPORTSTATISCSI::TCPRxSegmentsCount, "Tcp:InSegs"},
    {&HBAPORTSTATISCSI::TCPTimerExpiredCount, "TcpExt:TCPTimeouts"},
    {&HBAPORTSTATISCSI::TCPRxACKCount, "TcpExt:TCPPureAcks"},
    {&HBAPORTSTATISCSI::TCPRxErrorSegmentCount, "Tcp:InErrs"},
    {&HBAPORTSTATISCSI::TCPWindowProbeUpdateCount, "TcpExt:TCPWinProbe"},
};

using Values = std::map<std::string, SD_UINT64>;

// Two lines for each protocol: names, and their values in the same order.
void readPairedLines(const char *path, Values &values)
{
    std::ifstream file(path);
    std::string names;
    std::string numbers;
    while (std::getline(file, names) && std::getline(file, numbers)) {
        std::istringstream nameStream(names);
        std::istringstream numberStream(numbers);
        std::string prefix;
        std::string same;
        nameStream >> prefix;
        numberStream >> same;
        std::string name;
        long long value = 0; // a few are signed
        while (nameStream >> name && numberStream >> value) {
            values[prefix + name] = static_cast<SD_UINT64>(value);
        }
    }
}

void readSingleLines(const char *path, Values &values)
{
    std::ifstream file(path);
    std::string name;
    SD_UINT64 value = 0;
    while (file >> name >> value) {
        values[name] = value;
    }
}

} // namespace

HBAPORTSTATISCSI readProtocolCounters()
{
    HBAPORTSTATISCSI counters{};
    Values values;
    readPairedLines("/proc/net/snmp", values);
    readPairedLines("/proc/net/netstat", values);
    readSingleLines("/proc/net/snmp6", values);
    for (const Source &source : SOURCES) {
        counters.*source.counter += values[source.name];
    }
    return counters;
}
