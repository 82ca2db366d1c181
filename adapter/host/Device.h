// The device behind a network interface: its driver, what sits on the bus, and how they are called.
#pragma once

#include "Exported.h"

#include <string>

struct Device {
    std::string driver; // empty when there is none, as for the loopback interface
    std::string driverVersion;
    std::string firmware;
    std::string busAddress; // "0000:00:03.0"
    std::string maker;
    std::string model;      // never empty: where nothing better is known, what the interface is
    SD_UINT16 vendorId = 0; // of PCI or USB; 0 for devices that are on neither
    SD_UINT16 deviceId = 0;
    SD_UINT16 subVendorId = 0;
    SD_UINT16 subSystemId = 0;
    SD_UINT16 revision = 0;
    unsigned speed = 0; // Mb/s, 0 when the kernel does not tell
};

Device describeDevice(const std::string &interfaceName);

// Whether the interface is up and has its carrier.
bool isRunning(const std::string &interfaceName);
