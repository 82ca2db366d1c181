// The port of the host adapter: a network interface of this machine, and real targets behind it.
#pragma once

#include "EntrySession.h"
#include "SessionLoop.h"
#include "TargetPort.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

class HostPort : public TargetPort
{
public:
    HostPort(const AdapterModel &model, PortObserver &observer);
    // Logins under way have a second left, and so have the logouts after them.
    ~HostPort() override;

    bool linkUp() override;
    std::optional<HostAddresses> addresses() override;
    bool takesImages() const override;
    HBAPORTSTATISCSI counted() override;
    std::optional<std::vector<ARPTABLE>> neighbours() override;
    std::vector<std::string> report() override;

    PingResult ping(const PingRequest &request) override;
    DiscoveryResult discover(const SessionRequest &request) override;
    void login(const SessionRequest &request, LoginDone done) override;
    void logout(SD_UINT32 index) override;
    void logoutAll() override;
    CommandResult execute(const SessionRequest &request, SD_UINT16 lun, std::span<const SD_UINT8> command,
                          std::size_t allocationLength) override;
    IsnsResult queryIsns(const ISCSIIPADDR &server, const std::string &initiatorName,
                         std::chrono::milliseconds deadline) override;

private:
    std::shared_ptr<EntrySession> sessionFor(const SessionRequest &request);
    void endAll(const std::vector<std::shared_ptr<EntrySession>> &ending);

    const std::string interfaceName_;
    PortObserver &observer_;
    std::mutex mutex_;                                            // guards sessions_
    std::map<SD_UINT32, std::shared_ptr<EntrySession>> sessions_; // by the entry's index
    std::unique_ptr<SessionLoop> loop_;
};
