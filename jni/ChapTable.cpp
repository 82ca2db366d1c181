#include "ChapTable.h"

#include "JavaAccess.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <algorithm>
#include <span>

static constexpr const char *NO_ENTRY_CLASS = "Find Device class call failed!\n";

SD_UINT32 setiSCSICHAPEntry(JNIEnv *env, jobject entryObject, const CHAPTABLE &record)
{
    JavaObject entry = objectAs(env, entryObject, CHAP_TABLE_ENTRY_CLASS, NO_ENTRY_CLASS);
    setInt(entry, "setFlags", record.Flags, namedObj);
    setInt(entry, "setLink", record.Link, namedObj);
    setInt(entry, "setChapSecretLength", record.ChapSecretLength, namedObj);
    setShorts(entry, "setChapSecret", record.ChapSecret, named);
    setText(entry, "setChapSecretStr", record.ChapSecret, anonymous, noString);
    setText(entry, "setChapName", record.ChapName, anonymous, noString);
    return entry.status;
}

SD_UINT32 getiSCSICHAPEntry(JNIEnv *env, jobject entryObject, CHAPTABLE &record)
{
    JavaObject entry = objectAs(env, entryObject, CHAP_TABLE_ENTRY_CLASS, NO_ENTRY_CLASS);
    // Only 8 bits of the link cross in this direction, whatever the field's width.
    SD_UINT8 link = 0;
    getInt(entry, "getFlags", record.Flags, namedObj);
    getInt(entry, "getLink", link, namedObj);
    getInt(entry, "getChapSecretLength", record.ChapSecretLength, namedObj);
    getShorts(entry, "getChapSecret", record.ChapSecret, named);
    getText(entry, "getChapSecretStr", record.ChapSecret, anonymous);
    getText(entry, "getChapName", record.ChapName, anonymous);
    record.Link = link;
    return entry.status;
}

// Makes a CHAPTableEntry of a record and adds it to the HBA object. Whatever code the conversion fails with becomes
// ERR_JNI_NULL.
static void addEntry(JavaObject &hba, jclass entryClass, const CHAPTABLE &record)
{
    const auto entry = newObject(hba.env, entryClass, "New Device Object failed!\n");
    if (entry == nullptr || setiSCSICHAPEntry(hba.env, entry.get(), record) != 0) {
        hba.status = ERR_JNI_NULL;
    }
    setObject(hba, "addCHAPTableEntry", TAKES_CHAP_TABLE_ENTRY, entry.get(), namedObj);
}

static void addEntries(JavaObject &hba, std::span<const CHAPTABLE> records)
{
    const auto entryClass = findClass(hba.env, CHAP_TABLE_ENTRY_CLASS, "Find CHAP class call failed!\n");
    if (entryClass == nullptr) {
        hba.status = ERR_JNI_CLASS;
        return;
    }
    for (const CHAPTABLE &record : records) {
        if (hba.status == 0) {
            addEntry(hba, entryClass.get(), record);
        }
    }
}

// Reads into the table and hands its records over.
static SD_UINT32 readTable(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA, CHAPTABLE (&table)[CHAP_CAPACITY])
{
    JavaObject hba = objectOf(env, jHBA);
    if (hba.status != 0) {
        return hba.status;
    }
    SD_UINT32 reported = 0;
    if (failed(SDGetCHAPEntryNum(handle, &reported), "JNI: SDGetCHAPEntryNum call failed! %x \n")) {
        return ERR_JNI_NULL;
    }
    // The library may take the count for the table's room.
    SD_UINT32 count = std::min(reported, CHAP_CAPACITY);
    if (failed(SDGetCHAPTable(handle, table, &count), "JNI: SDGetCHAPTable call failed! %x \n")) {
        return ERR_JNI_NULL;
    }
    // Only a full table can be a cut one; how long it is may be known from the first count alone.
    const SD_UINT32 held = count < CHAP_CAPACITY ? count : std::max(count, reported);
    addEntries(hba, std::span(table).first(fitting(held, CHAP_CAPACITY, "CHAP table")));
    return hba.status;
}

SD_UINT32 readCHAPTable(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA)
{
    CHAPTABLE table[CHAP_CAPACITY];
    clear(table);
    const SD_UINT32 status = readTable(env, handle, jHBA, table);
    wipe(table, sizeof table);
    return status;
}

SD_UINT32 writeCHAPTable(JNIEnv *env, SDMGT_HANDLE handle, jobjectArray jArray)
{
    const jsize length = env->GetArrayLength(jArray);
    if (length == 0 || static_cast<SD_UINT32>(length) >= CHAP_CAPACITY) {
        return 0;
    }
    // Record 0 stays all zero, ahead of Java's entries.
    SD_UINT32 count = static_cast<SD_UINT32>(length) + 1;
    const auto table = newRecords<CHAPTABLE>(count, "Unable to Allocate CHAP Table, memory not available\n");
    if (table == nullptr) {
        return ERR_NO_MEMORY;
    }
    for (jsize i = 0; i < length; ++i) {
        const auto entry = local(env, env->GetObjectArrayElement(jArray, i));
        const SD_UINT32 status = entry == nullptr
                                     ? nullObject("NULL javaCHAPEntryObject!\n")
                                     : getiSCSICHAPEntry(env, entry.get(), table[static_cast<SD_UINT32>(i) + 1]);
        if (status != 0) {
            return status;
        }
    }
    return SDSetCHAPTable(handle, table.get(), &count);
}
