// Parameters of a session, see SessionParameters.h.
#include "SessionParameters.h"

#include "Fields.h"
#include "HostInventory.h"

#include <iscsi/iscsi.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

// Bits of an entry's iSCSI options that libiscsi lets negotiate.
constexpr SD_UINT16 OPTION_HEADER_DIGEST = 0x2000;
constexpr SD_UINT16 OPTION_NO_IMMEDIATE_DATA = 0x0800;
constexpr SD_UINT16 OPTION_INITIAL_R2T = 0x0400;

bool isLinkLocal(const ISCSIIPADDR &address)
{
    return address.IPAddress[0] == 0xFE && (address.IPAddress[1] & 0xC0) == 0x80;
}

// Two processes, and two sessions of one, never share an initiator session ID: a target would end the older session.
void setRandomSessionId(iscsi_context *context)
{
    std::array<SD_UINT8, 5> random{};
    if (getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size())) {
        return; // libiscsi made one from clock and process
    }
    iscsi_set_isid_random(context, static_cast<SD_UINT32>(random[0] << 16 | random[1] << 8 | random[2]),
                          static_cast<SD_UINT32>(random[3] << 8 | random[4]));
}

// Lends name and secret to use as terminated texts; the copy of the secret is wiped.
template <typename Use>
void lend(const std::optional<Credentials> &credentials, Use &&use)
{
    if (!credentials) {
        return;
    }
    std::array<char, sizeof CHAPTABLE::ChapSecret + 1> secret{};
    std::ranges::copy(credentials->secret.bytes(), secret.begin());
    use(credentials->name.c_str(), secret.data());
    explicit_bzero(secret.data(), secret.size());
}

} // namespace

SessionParameters parametersOf(const SessionRequest &request, const std::string &interfaceName)
{
    SessionParameters parameters;
    ISCSIIPADDR address = request.target.address;
    setAddressType(address);
    const std::string zone = isLinkLocal(address) ? "%" + interfaceName : "";
    const std::string host = address.Type == ADDRESS_IPV6 ? "[" + toText(address) + zone + "]" : toText(address);
    parameters.portal = host + ":" + std::to_string(request.target.port);
    parameters.targetName = request.target.name;
    parameters.initiatorName = request.initiatorName.empty() ? hostInitiatorName() : request.initiatorName;
    parameters.initiatorAlias = request.initiatorAlias;
    parameters.own = request.own;
    parameters.targets = request.targets;
    const SD_UINT16 options = request.parameters.iSCSIOptions;
    parameters.headerDigest = (options & OPTION_HEADER_DIGEST) != 0;
    parameters.immediateData = (options & OPTION_NO_IMMEDIATE_DATA) == 0;
    parameters.initialR2t = (options & OPTION_INITIAL_R2T) != 0;
    parameters.keepAlive = request.parameters.keepAliveTimeout;
    return parameters;
}

bool canBeHandedOver(const std::optional<Credentials> &credentials)
{
    return !credentials
           || std::ranges::find(credentials->secret.bytes(), SD_UINT8{0}) == credentials->secret.bytes().end();
}

void configure(iscsi_context *context, const SessionParameters &parameters)
{
    iscsi_set_noautoreconnect(context, 1);
    iscsi_set_alias(context, parameters.initiatorAlias.c_str());
    setRandomSessionId(context);
    if (parameters.targetName.empty()) {
        iscsi_set_session_type(context, ISCSI_SESSION_DISCOVERY);
    } else {
        iscsi_set_session_type(context, ISCSI_SESSION_NORMAL);
        iscsi_set_targetname(context, parameters.targetName.c_str());
    }
    iscsi_set_header_digest(context,
                            parameters.headerDigest ? ISCSI_HEADER_DIGEST_CRC32C_NONE : ISCSI_HEADER_DIGEST_NONE);
    iscsi_set_immediate_data(context, parameters.immediateData ? ISCSI_IMMEDIATE_DATA_YES : ISCSI_IMMEDIATE_DATA_NO);
    iscsi_set_initial_r2t(context, parameters.initialR2t ? ISCSI_INITIAL_R2T_YES : ISCSI_INITIAL_R2T_NO);
    if (parameters.keepAlive > 0) {
        iscsi_set_tcp_keepidle(context, parameters.keepAlive);
        iscsi_set_tcp_keepintvl(context, parameters.keepAlive);
    }
    lend(parameters.own,
         [&](const char *name, const char *secret) { iscsi_set_initiator_username_pwd(context, name, secret); });
    lend(parameters.targets,
         [&](const char *name, const char *secret) { iscsi_set_target_username_pwd(context, name, secret); });
}

// libiscsi fills its fields up with zeros.
void forgetSecrets(iscsi_context *context)
{
    iscsi_set_initiator_username_pwd(context, "", "");
    iscsi_set_target_username_pwd(context, "", "");
}
