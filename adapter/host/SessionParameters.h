// What goes into a login, and how libiscsi is told.
#pragma once

#include "TargetPort.h"

#include <optional>
#include <string>

struct iscsi_context;

struct SessionParameters {
    std::string portal;     // numeric address and TCP port, "10.0.0.1:3260" or "[fe80::1%eth0]:3260"
    std::string targetName; // empty for a discovery session
    std::string initiatorName;
    std::string initiatorAlias;
    std::optional<Credentials> own;     // to log in with
    std::optional<Credentials> targets; // by which the target has to prove itself
    bool headerDigest = false;          // ask for CRC32C, accept none
    bool immediateData = true;
    bool initialR2t = false;
    int keepAlive = 0; // seconds of silence before TCP asks the target; 0 is libiscsi's value
};

// The parameters of a request; the interface's name is for addresses that count on one link only.
SessionParameters parametersOf(const SessionRequest &request, const std::string &interfaceName);

// Whether libiscsi can be told of the credentials: it takes a secret as terminated text.
bool canBeHandedOver(const std::optional<Credentials> &credentials);

// Sets a context up for a login with these parameters.
void configure(iscsi_context *context, const SessionParameters &parameters);
// Wipes the context's copies of the secrets.
void forgetSecrets(iscsi_context *context);
