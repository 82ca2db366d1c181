#include "ChapTable.h"

#include <algorithm>

#include "JavaAccess.h"
#include "Records.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

static constexpr const char *NO_STRING = "NULL string for %s!\n";

SD_UINT32 setiSCSICHAPEntry(JNIEnv *env, jobject entryObject, const CHAPTABLE &record)
{
    return withClassNamed(env, CHAP_TABLE_ENTRY_CLASS, "Find Device class call failed!\n", [&](jclass type) {
        JavaObject entry{env, entryObject, type, 0};
        static_cast<void>(setInt(entry, "setFlags", record.Flags, namedObj)
                          && setInt(entry, "setLink", record.Link, namedObj)
                          && setInt(entry, "setChapSecretLength", record.ChapSecretLength, namedObj)
                          && setShorts(entry, "setChapSecret", record.ChapSecret, named)
                          && setText(entry, "setChapSecretStr", record.ChapSecret, anonymous, NO_STRING)
                          && setText(entry, "setChapName", record.ChapName, anonymous, NO_STRING));
        return entry.status;
    });
}

SD_UINT32 getiSCSICHAPEntry(JNIEnv *env, jobject entryObject, CHAPTABLE &record)
{
    return withClassNamed(env, CHAP_TABLE_ENTRY_CLASS, "Find Device class call failed!\n", [&](jclass type) {
        JavaObject entry{env, entryObject, type, 0};
        // Only 8 bits of the link cross in this direction, whatever the field's width.
        SD_UINT8 link = 0;
        static_cast<void>(getInt(entry, "getFlags", record.Flags, namedObj) //
                          && getInt(entry, "getLink", link, namedObj)
                          && getInt(entry, "getChapSecretLength", record.ChapSecretLength, namedObj)
                          && getShorts(entry, "getChapSecret", record.ChapSecret, named)
                          && getText(entry, "getChapSecretStr", record.ChapSecret, anonymous)
                          && getText(entry, "getChapName", record.ChapName, anonymous));
        record.Link = link;
        return entry.status;
    });
}

// Makes a CHAPTableEntry of a record and adds it to the HBA object. Whatever code the conversion fails with becomes
// ERR_JNI_NULL.
static SD_UINT32 addEntry(JavaObject &hba, jclass entryClass, const CHAPTABLE &record)
{
    return withNew(hba.env, entryClass, "New Device Object failed!\n", [&](JavaObject &entry) {
        if (setiSCSICHAPEntry(hba.env, entry.object, record) != 0) {
            entry.status = ERR_JNI_NULL;
        } else if (!setObject(hba, "addCHAPTableEntry", TAKES_CHAP_TABLE_ENTRY, entry.object, namedObj)) {
            entry.status = hba.status;
        }
    });
}

// Of a count above the table's capacity only what the table holds is handed over.
static SD_UINT32 addEntries(JavaObject &hba, const CHAPTABLE *table, SD_UINT32 count)
{
    return withClassNamed(hba.env, CHAP_TABLE_ENTRY_CLASS, "Find CHAP class call failed!\n", [&](jclass entryClass) {
        SD_UINT32 status = 0;
        for (SD_UINT32 i = 0; i < std::min(count, CHAP_CAPACITY) && status == 0; i++) {
            status = addEntry(hba, entryClass, table[i]);
        }
        return status;
    });
}

SD_UINT32 readCHAPTable(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA)
{
    CHAPTABLE table[CHAP_CAPACITY];
    clear(table);
    const SD_UINT32 status = withClassOf(env, jHBA, [&](JavaObject &hba) {
        SD_UINT32 count = 0;
        if (failed(SDGetCHAPEntryNum(handle, &count), "JNI: SDGetCHAPEntryNum call failed! %x \n")
            || failed(SDGetCHAPTable(handle, table, &count), "JNI: SDGetCHAPTable call failed! %x \n")) {
            hba.status = ERR_JNI_NULL;
            return;
        }
        hba.status = addEntries(hba, table, count);
    });
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
    constexpr const char *noMemory = "Unable to Allocate CHAP Table, memory not available\n";
    return withRecords<CHAPTABLE>(count, noMemory, [&](CHAPTABLE *table) {
        SD_UINT32 status = 0;
        for (jsize i = 0; i < length && status == 0; i++) {
            status = withLocal(env, env->GetObjectArrayElement(jArray, i), [&](jobject entry) {
                return entry == nullptr ? nullObject("NULL javaCHAPEntryObject!\n")
                                        : getiSCSICHAPEntry(env, entry, table[i + 1]);
            });
        }
        return status != 0 ? status : SDSetCHAPTable(handle, table, &count);
    });
}
