// Maintenance: firmware update, reset, crash record, ping.
#include "Checksum.h"
#include "Fields.h"
#include "Files.h"
#include "FirmwareConfiguration.h"
#include "Initiator.h"
#include "Library.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace
{

constexpr SD_UINT32 IMAGE_FIRMWARE = 0;
constexpr SD_UINT32 IMAGE_OPTION_ROM = 1;
constexpr off_t IMAGE_LIMIT = 16 << 20;

std::vector<SD_UINT8> readImage(const char *fileName)
{
    const Descriptor file(open(fileName, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat properties {
    };
    require(file && fstat(file.number(), &properties) == 0 && S_ISREG(properties.st_mode), ERR_IMAGE_FILE);
    require(properties.st_size > 0 && properties.st_size <= IMAGE_LIMIT, ERR_IMAGE_FILE);
    std::vector<SD_UINT8> image(static_cast<std::size_t>(properties.st_size));
    require(readAll(file.number(), image), ERR_IMAGE_FILE);
    return image;
}

// The version of an image: what its first line says after "TAVOFW ", else one that follows from all of its bytes. A
// first line whose version is empty, too long or not plain text makes the image a bad one.
std::string imageVersion(std::span<const SD_UINT8> image)
{
    constexpr std::string_view mark = "TAVOFW ";
    constexpr std::size_t longest = 127;
    const std::string_view text(reinterpret_cast<const char *>(image.data()), image.size());
    if (!text.starts_with(mark)) {
        char version[24];
        (void)std::snprintf(version, sizeof version, "image-%08x", static_cast<unsigned>(checksum(image) & 0xFFFFFFFF));
        return version;
    }
    const std::string_view version = text.substr(mark.size(), text.find('\n') - mark.size());
    const auto plain = [](char letter) {
        return letter > ' ' && letter <= '~';
    };
    require(!version.empty() && version.size() <= longest && std::ranges::all_of(version, plain), ERR_IMAGE_FILE);
    return std::string(version);
}

// Names and secrets of the CHAP table do not belong here.
std::string crashReport(Adapter &adapter)
{
    const auto settings = adapter.settings.read();
    const Activity activity = adapter.activity.read();
    const AdapterModel &model = adapter.model();
    const std::time_t now = std::time(nullptr);
    std::tm clock{};
    gmtime_r(&now, &clock);

    char when[32];
    (void)std::strftime(when, sizeof when, "%Y-%m-%dT%H:%M:%SZ", &clock);

    std::string report = "Tavo adapter crash record\n";
    const auto line = [&](std::string_view label, const std::string &value) {
        report.append(label).append(": ").append(value).append("\n");
    };
    line("written", when);
    line("adapter", std::to_string(model.index) + " " + model.deviceName);
    line("model", model.model);
    line("serial number", model.serialNumber);
    line("firmware", getText(settings->versions.firmware));
    line("firmware after the next reset", getText(settings->versions.nextFirmware));
    line("address", toText(blockInForce(adapter).IPAddr));
    line("link", adapter.port().linkUp() ? "up" : "down");
    line("CHAP entries", std::to_string(settings->chap.size()));
    line("commands completed", std::to_string(activity.statistics.iSCSICompleteIOsCount));
    line("device database entries", std::to_string(settings->entries().size()));
    for (const SharedEntry &entry : settings->entries()) {
        line("  " + std::to_string(entry->TargetID), "state " + std::to_string(entry->DeviceState) + " "
                                                         + toText(addressOf(*entry).address) + " "
                                                         + getText(entry->EntryInfo.iSCSIName));
    }
    line("connection errors", std::to_string(activity.errors.size()));
    for (const CONNERRTABLE &error : activity.errors) {
        char text[120];
        (void)std::snprintf(text, sizeof text, "target %u state %u type %u error %u detail 0x%04x again %u",
                            error.deviceIndex, error.connState, error.entryType, error.errorType, error.errorDetail,
                            error.dupErrorCnt);
        line("  " + std::to_string(error.timeStamp.seconds) + " s " + std::to_string(error.timeStamp.milliseconds)
                 + " ms",
             text);
    }
    for (const std::string &more : adapter.port().report()) {
        report.append(more).append("\n");
    }
    return report;
}

// What waits for the reset comes into force.
template <std::size_t Size>
void activate(SD_UINT8 (&current)[Size], SD_UINT8 (&next)[Size])
{
    if (next[0] != 0) {
        std::copy_n(next, Size, current);
        setText(next, "");
    }
}

} // namespace

extern "C" {

// imageType 0 is firmware, 1 the option ROM. The new version comes into force with the next reset.
SD_UINT32 SDUpdateiSCSIFW(SDMGT_HANDLE handle, const char *fileName, SD_UINT32 imageType)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(fileName);
        require(imageType == IMAGE_FIRMWARE || imageType == IMAGE_OPTION_ROM, ERR_INVALID_PARAMETER);
        require(adapter.port().takesImages(), ERR_NOT_SUPPORTED);
        const std::string version = imageVersion(readImage(fileName));
        adapter.settings.change([&](Settings &settings) {
            ImageVersions &versions = settings.versions;
            setText(imageType == IMAGE_FIRMWARE ? versions.nextFirmware : versions.nextOptionRom, version);
        });
    });
}

// All sessions are made anew, those that were logged out too, and waiting images come into force. ResetOptions selects
// nothing: there is one kind of reset.
SD_UINT32 SDResetHBA(SDMGT_HANDLE handle, HBARESET *request)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(request);
        loginAll(adapter, [](Settings &settings) {
            activate(settings.versions.firmware, settings.versions.nextFirmware);
            activate(settings.versions.optionRom, settings.versions.nextOptionRom);
        });
    });
}

SD_UINT32 SDGetCrashRecord(SDMGT_HANDLE handle, const char *fileName)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(fileName);
        require(replaceFile(fileName, crashReport(adapter)), ERR_OUTPUT_FILE);
    });
}

SD_UINT32 SDDiagPing(SDMGT_HANDLE handle, PING *request)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(request);
        require(request->packetCount != 0, ERR_INVALID_PARAMETER);
        const auto settings = adapter.settings.read();
        const PingResult result = adapter.port().ping({request->IPAddr, request->packetCount, settings->block.IPAddr,
                                                       deadlineOf(*settings, settings->block.DeviceInfo)});
        require(result != PingResult::notSupported, ERR_NOT_SUPPORTED);
        require(result == PingResult::answered, ERR_UNREACHABLE);
    });
}
}
