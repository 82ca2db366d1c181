// Devices by the ioctl of ethtool and by sysfs, see Device.h.
#include "Device.h"

#include "Fields.h"
#include "Files.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <filesystem>
#include <fstream>
#include <string_view>

namespace
{

namespace fs = std::filesystem;

constexpr const char *PCI_NAMES[] = {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"};

template <std::size_t Size>
std::string textOf(const char (&field)[Size])
{
    return {field, std::find(field, field + Size, '\0')};
}

ifreq requestFor(const std::string &interfaceName)
{
    ifreq request{};
    interfaceName.copy(request.ifr_name, sizeof request.ifr_name - 1);
    return request;
}

Descriptor openSocket()
{
    return Descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

// The first line of a file, or nothing.
std::string readLine(const fs::path &file)
{
    std::string line;
    std::ifstream stream(file);
    std::getline(stream, line);
    return line;
}

// A number such as 0x8086 or 8086, both hexadecimal.
SD_UINT16 readId(const fs::path &file)
{
    return static_cast<SD_UINT16>(std::strtoul(readLine(file).c_str(), nullptr, 16));
}

std::string hexadecimal(SD_UINT16 id)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4) {
        text += digits[(id >> shift) & 0xFU];
    }
    return text;
}

// Fills in the names of the PCI database, where one is installed: lines "vvvv  Maker", below them "\tdddd  Model".
void namePciDevice(Device &device)
{
    const std::string maker = hexadecimal(device.vendorId) + "  ";
    const std::string model = "\t" + hexadecimal(device.deviceId) + "  ";
    for (const char *path : PCI_NAMES) {
        std::ifstream names(path);
        bool within = false;
        for (std::string line; std::getline(names, line);) {
            if (line.starts_with(maker)) {
                within = true;
                device.maker = line.substr(maker.size());
            } else if (within && line.starts_with(model)) {
                device.model = line.substr(model.size());
                return;
            } else if (within && !line.starts_with('\t')) {
                return;
            }
        }
    }
}

// Looks for the bus that the device is on: itself, or what it is a function of.
void readBus(Device &device, const std::string &interfaceName)
{
    std::error_code error;
    fs::path place = fs::canonical("/sys/class/net/" + interfaceName + "/device", error);
    for (; !error && place.has_relative_path() && place != "/sys/devices"; place = place.parent_path()) {
        const std::string bus = fs::read_symlink(place / "subsystem", error).filename();
        error.clear();
        if (bus == "pci") {
            device.vendorId = readId(place / "vendor");
            device.deviceId = readId(place / "device");
            device.subVendorId = readId(place / "subsystem_vendor");
            device.subSystemId = readId(place / "subsystem_device");
            device.revision = readId(place / "revision");
            device.model = "PCI device " + hexadecimal(device.vendorId) + ":" + hexadecimal(device.deviceId);
            namePciDevice(device);
            return;
        }
        if (bus == "usb" && fs::exists(place / "idVendor", error)) {
            device.vendorId = readId(place / "idVendor");
            device.deviceId = readId(place / "idProduct");
            device.maker = readLine(place / "manufacturer");
            device.model = readLine(place / "product");
            return;
        }
    }
}

// What the interface is, as far as the kernel tells.
std::string kindOf(const std::string &interfaceName, const std::string &driver)
{
    const fs::path folder = "/sys/class/net/" + interfaceName;
    constexpr std::string_view mark = "DEVTYPE=";
    std::ifstream properties(folder / "uevent");
    for (std::string line; std::getline(properties, line);) {
        if (line.starts_with(mark)) {
            return line.substr(mark.size()) + " interface";
        }
    }
    ifreq request = requestFor(interfaceName);
    const Descriptor socket = openSocket();
    if (ioctl(socket.number(), SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & IFF_LOOPBACK) != 0) {
        return "loopback interface";
    }
    return driver.empty() ? "network interface" : driver + " network interface";
}

} // namespace

Device describeDevice(const std::string &interfaceName)
{
    Device device;
    const Descriptor socket = openSocket();
    ethtool_drvinfo driver{};
    driver.cmd = ETHTOOL_GDRVINFO;
    ifreq request = requestFor(interfaceName);
    request.ifr_data = reinterpret_cast<char *>(&driver);
    if (ioctl(socket.number(), SIOCETHTOOL, &request) == 0) {
        device.driver = textOf(driver.driver);
        device.driverVersion = textOf(driver.version);
        device.firmware = textOf(driver.fw_version);
        device.busAddress = textOf(driver.bus_info);
    }
    readBus(device, interfaceName);
    if (device.model.empty()) {
        device.model = kindOf(interfaceName, device.driver);
    }
    const long speed = std::strtol(readLine("/sys/class/net/" + interfaceName + "/speed").c_str(), nullptr, 10);
    device.speed = speed > 0 ? static_cast<unsigned>(speed) : 0;
    return device;
}

bool isRunning(const std::string &interfaceName)
{
    ifreq request = requestFor(interfaceName);
    const Descriptor socket = openSocket();
    constexpr short running = IFF_UP | IFF_RUNNING;
    return ioctl(socket.number(), SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & running) == running;
}
