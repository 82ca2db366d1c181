// Requests to a port, see PortTest.h.
#include "PortTest.h"

#include "ScsiStandard.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <span>
#include <thread>

std::unique_ptr<TargetPort> openPortOf(const std::string &interfaceName, PortObserver &observer)
{
    setenv("TAVO_ADAPTER_INTERFACES", interfaceName.c_str(), 1);
    const auto model = findModel(0);
    return model ? openPort(*model, observer) : nullptr;
}

SessionRequest requestFor(SD_UINT16 port, const std::string &targetName, std::chrono::milliseconds deadline)
{
    SessionRequest request;
    request.target = {{{127, 0, 0, 1}, 1, 0}, port, targetName};
    request.initiatorName = "iqn.2024-01.example:initiator";
    request.initiatorAlias = "test";
    request.deadline = deadline;
    return request;
}

Credentials credentials(const std::string &name, const std::string &secret)
{
    return {name, Secret(std::span(reinterpret_cast<const SD_UINT8 *>(secret.data()), secret.size()))};
}

LoginResult logIn(TargetPort &port, const SessionRequest &request)
{
    const auto outcome = std::make_shared<std::promise<LoginResult>>();
    auto future = outcome->get_future();
    port.login(request, [outcome](const LoginResult &login) { outcome->set_value(login); });
    if (future.wait_for(2 * request.deadline) != std::future_status::ready) {
        ADD_FAILURE() << "a login does not end";
        return {};
    }
    return future.get();
}

CommandResult reportLuns(TargetPort &port, const SessionRequest &request, SD_UINT32 allocation)
{
    std::array<SD_UINT8, 12> command{SCSI_REPORT_LUNS};
    command[8] = static_cast<SD_UINT8>(allocation >> 8);
    command[9] = static_cast<SD_UINT8>(allocation);
    return port.execute(request, 0, command, allocation);
}

CommandResult readCapacity(TargetPort &port, const SessionRequest &request, SD_UINT16 lun)
{
    const std::array<SD_UINT8, 10> command{SCSI_READ_CAPACITY_10};
    return port.execute(request, lun, command, sizeof(READ_CAPACITY_DATA));
}

bool succeeded(const CommandResult &result)
{
    return result.login.reach == Reach::session && result.status == SCSI_GOOD;
}

std::chrono::steady_clock::duration timeOf(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

void awaitUntil(const std::function<bool()> &condition)
{
    for (int tries = 0; tries < 1000 && !condition(); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

std::size_t countOwn(const std::string &folder)
{
    const std::filesystem::directory_iterator entries("/proc/self/" + folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::ostream &operator<<(std::ostream &stream, Reach reach)
{
    constexpr std::array names{"session", "unreachable", "timeout", "unknownTarget", "authentication", "refused"};
    return stream << names.at(static_cast<std::size_t>(reach));
}
