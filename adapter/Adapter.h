// An adapter: what its maker fixed (AdapterModel), its settings and what it has counted and logged. The settings and
// the activity are values that live in files (Flash.h).
#pragma once

#include "Flash.h"

#include <memory>
#include <vector>

// States of a device database entry. Callers may write others; the adapter treats them like ENTRY_CONFIGURED.
inline constexpr SD_UINT32 ENTRY_FREE = 0;       // the slot is not in use
inline constexpr SD_UINT32 ENTRY_CONFIGURED = 1; // the adapter logs in when it is asked for the target
inline constexpr SD_UINT32 ENTRY_SESSION = 2;    // logged in
inline constexpr SD_UINT32 ENTRY_LOGGED_OUT = 3; // logged out, until the adapter is reset or the entry written again

// Versions of the two images, in force and waiting for the next reset (empty when none is).
struct ImageVersions {
    SD_UINT8 firmware[128];
    SD_UINT8 nextFirmware[128];
    SD_UINT8 optionRom[128];
    SD_UINT8 nextOptionRom[128];
};

// What the callers can change. Kept in the flash file, durably.
struct Settings {
    INITFWISCSI block{};
    ImageVersions versions{};
    SDM_ISNS_CONFIG isns{};
    std::vector<DEVICEENTRYISCSI> entries; // those in use, in the order of their TargetID; NextValid is 0
    std::vector<CHAPTABLE> chap;

    // The entry with this index, or the place where it would be inserted.
    std::vector<DEVICEENTRYISCSI>::const_iterator place(SD_UINT32 index) const;
    // The entry with this index, or null.
    const DEVICEENTRYISCSI *find(SD_UINT32 index) const;
    DEVICEENTRYISCSI *find(SD_UINT32 index);

    template <class Stream, class Self>
    static void transfer(Stream &stream, Self &settings)
    {
        stream.record(settings.block);
        stream.record(settings.versions);
        stream.record(settings.isns);
        stream.list(settings.entries, DDB_SLOTS);
        stream.list(settings.chap, CHAP_CAPACITY);
    }
    void verify() const;
};

// An address that the adapter has talked to.
struct Neighbour {
    ARPTABLE entry;    // time_in is filled in when the table is read
    SD_UINT32 seconds; // when it was last heard of
};

// What the adapter counts and logs. Kept in a file of its own that is replaced without waiting for the disk: it
// survives the process, and after a power failure it may be older or start afresh.
struct Activity {
    HBAPORTSTATISCSI statistics{};
    std::vector<CONNERRTABLE> errors;  // oldest first
    std::vector<Neighbour> neighbours; // longest silent first

    template <class Stream, class Self>
    static void transfer(Stream &stream, Self &activity)
    {
        stream.record(activity.statistics);
        stream.list(activity.errors, LOG_CAPACITY);
        stream.list(activity.neighbours, LOG_CAPACITY);
    }
    void verify() const {}
};

// What the maker fixed.
struct AdapterModel {
    SD_UINT32 index;
    const char *deviceName;
    const char *serialNumber;
    const char *manufacturer;
    const char *model;
    const char *optionRomVersion;
    const char *firmwareVersion;
    const char *boardType;
    SD_UINT8 mac[6];
    SD_UINT16 type;
    SD_UINT16 chipVersion;
    SD_UINT16 deviceId;
    SD_UINT32 driverAttributes;
    SD_UINT32 firmwareAttributes;
    bool linkUp;
    bool isnsSupported;
};

struct Adapter {
    Adapter(const AdapterModel &fixed, const std::string &folder);

    const AdapterModel &model;
    Store<Settings> settings;
    Store<Activity> activity;
};

// The model with this index, or null.
const AdapterModel *findModel(SD_UINT32 index);

// The adapter as it left the factory (Adapters.cpp).
Settings factorySettings(const AdapterModel &model);
Activity factoryActivity(const AdapterModel &model);
INITFWISCSI defaultBlock(const AdapterModel &model);
DEVICEENTRYISCSI defaultEntry(const AdapterModel &model);
