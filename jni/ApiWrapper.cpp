// The front door: the 39 native methods. It is entered from Java only.
//
// A native method is its entry frame (null checks, adapter index, handle) in the order that the contract gives it,
// followed by one call into its family. What its caller sees first when several things are wrong is read here.

#include "AdapterInformation.h"
#include "ChapTable.h"
#include "DeviceDatabaseEntry.h"
#include "FirmwareConfiguration.h"
#include "Handles.h"
#include "IsnsDiscovery.h"
#include "JavaAccess.h"
#include "Logs.h"
#include "RecordMemory.h"
#include "ScsiPassThrough.h"
#include "Statistics.h"
#include "TargetDatabase.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

// A status as it crosses to Java.
static jint toJava(SD_UINT32 status)
{
    return static_cast<jint>(status);
}

// A status as the boolean methods hand it over.
static jboolean succeeded(SD_UINT32 status)
{
    return status == 0 ? JNI_TRUE : JNI_FALSE;
}

// The checks of an entry frame, in the order in which they stand: the first that fails leaves its status, and those
// after it do nothing.
static void checkIndex(SD_UINT32 &status, jint dev)
{
    if (status == 0 && !isAdapterIndex(dev)) {
        status = ERR_INVALID_PARAMETER;
    }
}

static void checkNull(SD_UINT32 &status, const void *object, const char *line)
{
    if (status == 0 && object == nullptr) {
        status = nullObject(line);
    }
}

extern "C" {

// ---- Handles, version, trace ----

JNIEXPORT void JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_initJNINative(JNIEnv *, jobject)
{
    clearHandles();
}

// An index outside the table names no adapter: the library is not asked, here and in closeDevice.
JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_openDevice(JNIEnv *, jobject, jint dev)
{
    if (!isAdapterIndex(dev)) {
        return JNI_FALSE;
    }
    SDMGT_HANDLE handle = 0;
    const SD_UINT32 status = SDOpenDeviceiSCSI(static_cast<SD_UINT32>(dev), &handle);
    if (status == 0) {
        storeHandle(dev, handle);
    }
    return succeeded(status);
}

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_closeDevice(JNIEnv *, jobject, jint dev)
{
    if (!isAdapterIndex(dev)) {
        return JNI_FALSE;
    }
    const SD_UINT32 status = SDCloseDeviceiSCSI(hbaHandle(dev));
    if (status == 0) {
        storeHandle(dev, 0);
    }
    return succeeded(status);
}

JNIEXPORT jstring JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getVersioniSCSI(JNIEnv *env, jobject)
{
    SD_UINT8 versionString[VERSION_TEXT_SIZE];
    clear(versionString);
    SDGetVersioniSCSI(reinterpret_cast<char *>(versionString), VERSION_TEXT_SIZE);
    return newText(env, versionString).release();
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_enableSdmTrace(JNIEnv *env, jobject, jint dev,
                                                                                jstring fileName)
{
    auto characters = utfChars(env, fileName);
    if (!isAdapterIndex(dev)) {
        return toJava(ERR_INVALID_PARAMETER);
    }
    if (characters == nullptr) {
        // Without a name there is nothing to switch on, which is no failure.
        forgetOwnError(env);
        return 0;
    }
    SDMGT_HANDLE handle = hbaHandle(dev);
    const SD_UINT32 status = SDEnableDebugTraceiSCSI(&handle, characters.get(), 0xFFFFFFFF);
    characters.reset();
    report(status, "JNI: SDEnableDebugTraceiSCSI: %x \n");
    return toJava(status);
}

// ---- Adapter information ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIAdapterInfo(JNIEnv *env, jobject, jint dev,
                                                                                     jobject jObj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jObj, "NULL javaHBAObject!\n");
    return toJava(status != 0 ? status : readAdapterInfo(env, hbaHandle(dev), jObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIFWInfo(JNIEnv *env, jobject, jint dev,
                                                                                jobject jObj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jObj, "NULL Java Obj!\n");
    return toJava(status != 0 ? status : readFWInfo(env, hbaHandle(dev), jObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIDriverInfo(JNIEnv *env, jobject, jint dev,
                                                                                    jobject jObj)
{
    SD_UINT32 status = 0;
    checkNull(status, jObj, "NULL Java Obj!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : readDriverInfo(env, hbaHandle(dev), jObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getChipInfo(JNIEnv *env, jobject, jint dev,
                                                                             jobject jHba)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jHba, "NULL javaHBAObject!\n");
    return toJava(status != 0 ? status : readChipInfo(env, hbaHandle(dev), jHba));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAState(JNIEnv *env, jobject, jint dev,
                                                                                  jobject jHBA)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jHBA, "NULL jHBA!\n");
    return toJava(status != 0 ? status : readHBAState(env, hbaHandle(dev), jHBA));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAData(JNIEnv *env, jobject, jint dev,
                                                                                 jobject jObj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jObj, "NULL Java Obj!\n");
    return toJava(status != 0 ? status : readHBAData(env, dev, jObj));
}

// ---- Device database ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIEntryNum(JNIEnv *, jobject, jint dev)
{
    return toJava(isAdapterIndex(dev) ? readEntryNum(hbaHandle(dev)) : ERR_INVALID_PARAMETER);
}

JNIEXPORT jobject JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getDefaultDDBEntry(JNIEnv *env, jobject, jint dev)
{
    return isAdapterIndex(dev) ? readDefaultDDB(env, hbaHandle(dev)) : nullptr;
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getInitialDDBEntry(JNIEnv *env, jobject, jint dev,
                                                                                    jobject JDDB, jint jIndex)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, JDDB, "NULL JDDB!\n");
    return toJava(status != 0 ? status : readInitialDDB(env, hbaHandle(dev), JDDB, jIndex));
}

// The entry written is the one that jDDB's target ID names; the index is not used.
JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBData(JNIEnv *env, jobject, jint dev,
                                                                            jobject jDDB, jint)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jDDB, "NULL javaDDBObject!\n");
    return toJava(status != 0 ? status : writeDDB(env, hbaHandle(dev), jDDB));
}

// The adapter index is checked once the first element is there.
JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBsData(JNIEnv *env, jobject, jint dev,
                                                                             jobjectArray jArray)
{
    SD_UINT32 status = 0;
    checkNull(status, jArray, "NULL jArray!\n");
    return toJava(status != 0 ? status : writeDDBs(env, dev, jArray));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_logoutDDB(JNIEnv *, jobject, jint dev, jint index,
                                                                           jint options, jint newIndex)
{
    return toJava(isAdapterIndex(dev) ? sendLogout(hbaHandle(dev), index, options, newIndex) : ERR_INVALID_PARAMETER);
}

// ---- Discovered targets and LUNs ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSITargetData(JNIEnv *env, jobject, jint dev,
                                                                                    jobject jHba, jobject jTarget)
{
    SD_UINT32 status = 0;
    checkNull(status, jTarget, "NULL jTarget!\n");
    checkNull(status, jHba, "NULL jHba!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : readTargetData(env, hbaHandle(dev), jHba, jTarget));
}

// The adapter index is checked once the LUN object's own objects are there.
JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSILunData(JNIEnv *env, jobject, jint dev,
                                                                                 jobject jLun)
{
    SD_UINT32 status = 0;
    checkNull(status, jLun, "NULL jLun!\n");
    return toJava(status != 0 ? status : readLunData(env, dev, jLun));
}

// ---- Firmware configuration and adapter maintenance ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getFWData(JNIEnv *env, jobject, jint dev, jobject jObj)
{
    SD_UINT32 status = 0;
    checkNull(status, jObj, "NULL jObj!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : readFWData(env, hbaHandle(dev), jObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getISCSIFWDefaults(JNIEnv *env, jobject, jint dev,
                                                                                    jobject jInitFW)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jInitFW, "NULL jInitFW!\n");
    return toJava(status != 0 ? status : readFWDefaults(env, hbaHandle(dev), jInitFW));
}

// The HBA object is tested for null only after the block was read.
JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setFWData(JNIEnv *env, jobject, jint dev, jobject jHba)
{
    return toJava(isAdapterIndex(dev) ? writeFWData(env, hbaHandle(dev), jHba) : ERR_INVALID_PARAMETER);
}

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setISCSIDefaults(JNIEnv *, jobject, jint dev)
{
    return succeeded(isAdapterIndex(dev) ? restoreFWDefaults(hbaHandle(dev)) : ERR_INVALID_PARAMETER);
}

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_iSCSIUpdateFW(JNIEnv *env, jobject, jint dev,
                                                                                   jstring fName, jshort type)
{
    SD_UINT32 status = 0;
    checkNull(status, fName, "NULL fName!\n");
    const auto characters = utfChars(env, fName);
    checkNull(status, characters.get(), "NULL characters of fName!\n");
    checkIndex(status, dev);
    return succeeded(status != 0 ? status : updateFW(hbaHandle(dev), characters.get(), type));
}

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_resetISCSIHBA(JNIEnv *, jobject, jint dev)
{
    return succeeded(isAdapterIndex(dev) ? resetHBA(hbaHandle(dev)) : ERR_INVALID_PARAMETER);
}

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_resetISCSICounters(JNIEnv *, jobject, jint dev,
                                                                                        jint portNum)
{
    return succeeded(isAdapterIndex(dev) ? resetCounters(hbaHandle(dev), portNum) : ERR_INVALID_PARAMETER);
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_retrieveCrashRecord(JNIEnv *env, jobject, jint dev,
                                                                                     jstring fileName)
{
    SD_UINT32 status = 0;
    checkNull(status, fileName, "NULL fileName!\n");
    auto characters = utfChars(env, fileName);
    checkNull(status, characters.get(), "NULL characters of fileName!\n");
    checkIndex(status, dev);
    if (status == 0) {
        status = SDGetCrashRecord(hbaHandle(dev), characters.get());
        characters.reset();
        report(status, "JNI: SDGetCrashRecord failed! %x\n");
    }
    return toJava(status);
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_ping(JNIEnv *env, jobject, jint dev, jobject ipAddr,
                                                                      jint count)
{
    return toJava(isAdapterIndex(dev) ? sendPing(env, hbaHandle(dev), ipAddr, count) : ERR_INVALID_PARAMETER);
}

// ---- SCSI commands to targets ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiReportLUNsData(JNIEnv *env, jobject, jint dev,
                                                                                       jobject jHba, jobject jTarget)
{
    SD_UINT32 status = 0;
    checkNull(status, jTarget, "NULL jTarget!\n");
    checkNull(status, jHba, "NULL jHba!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : sendReportLUNs(env, hbaHandle(dev), jTarget));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiInquiryData(JNIEnv *env, jobject, jint dev,
                                                                                    jobject targetInfoObj,
                                                                                    jobject inqObj)
{
    SD_UINT32 status = 0;
    checkNull(status, inqObj, "NULL inqObj!\n");
    checkNull(status, targetInfoObj, "NULL targetInfoObj!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : sendInquiry(env, hbaHandle(dev), targetInfoObj, inqObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiReadCapacityData(JNIEnv *env, jobject, jint dev,
                                                                                         jobject jLun)
{
    SD_UINT32 status = 0;
    checkNull(status, jLun, "NULL jLun!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : sendReadCapacity(env, hbaHandle(dev), jLun));
}

// ---- Statistics and logs ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIStatistics(JNIEnv *env, jobject, jint dev,
                                                                                    jobject jStats)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jStats, "NULL jStats!\n");
    return toJava(status != 0 ? status : readStatistics(env, hbaHandle(dev), jStats));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getConnectErrorLog(JNIEnv *env, jobject, jint dev,
                                                                                    jobject jObj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jObj, "NULL Java Obj!\n");
    return toJava(status != 0 ? status : readConnectErrorLog(env, hbaHandle(dev), jObj));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getARPLog(JNIEnv *env, jobject, jint dev, jobject jObj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jObj, "NULL Java Obj!\n");
    return toJava(status != 0 ? status : readARPLog(env, hbaHandle(dev), jObj));
}

// ---- CHAP table ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getCHAPTableData(JNIEnv *env, jobject, jint dev,
                                                                                  jobject jHBA)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jHBA, "NULL jHBA!\n");
    return toJava(status != 0 ? status : readCHAPTable(env, hbaHandle(dev), jHBA));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setCHAPTableData(JNIEnv *env, jobject, jint dev,
                                                                                  jobjectArray jArray)
{
    SD_UINT32 status = 0;
    checkNull(status, jArray, "NULL jArray!\n");
    checkIndex(status, dev);
    return toJava(status != 0 ? status : writeCHAPTable(env, hbaHandle(dev), jArray));
}

// ---- iSNS discovery ----

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSNSDiscoveryConfig(JNIEnv *env, jobject, jint dev,
                                                                                        jobject jiSNSDiscoveryConfig)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jiSNSDiscoveryConfig, "NULL java iSNSDiscoveryConfig Object!\n");
    return toJava(status != 0 ? status : readiSNSDiscoveryConfig(env, hbaHandle(dev), jiSNSDiscoveryConfig));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setiSNSDiscoveryConfig(JNIEnv *env, jobject, jint dev,
                                                                                        jobject jiSNSDiscoveryConfig)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jiSNSDiscoveryConfig, "NULL java iSNSDiscoveryConfig Object!\n");
    return toJava(status != 0 ? status : writeiSNSDiscoveryConfig(env, hbaHandle(dev), jiSNSDiscoveryConfig));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSNSTargets(JNIEnv *env, jobject, jint dev,
                                                                                jobject jHBAobj)
{
    SD_UINT32 status = 0;
    checkIndex(status, dev);
    checkNull(status, jHBAobj, "NULL java HBA Object!\n");
    return toJava(status != 0 ? status : readiSNSTargets(env, hbaHandle(dev), jHBAobj));
}
}
