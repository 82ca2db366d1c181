// iSNS: the discovery settings, both ways, and the targets that discovery found. A status is 0, one of the bridge's own
// or the management library's, unchanged.
#pragma once

#include "vdsdm/IsnsDiscovery.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Copies the settings into the configuration object. The initiator name does not cross; the host name is always " ".
SD_UINT32 SDMToJava_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, const SDM_ISNS_CONFIG &config);

// Fills the settings from the configuration object.
SD_UINT32 JavaToSDM_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, SDM_ISNS_CONFIG &config);

// Makes an iSNSTarget of a record, with its first portal alone, and adds it to the HBA object.
SD_UINT32 SDMToJava_iSNSDiscoveredTargets(JNIEnv *env, jclass hbacls, jclass iSNSTargetcls, jobject jHBAObj,
                                          const SDM_ISNS_DISCOVERED_TARGET *discoveredTargetTable);

// Reads the settings into the configuration object.
SD_UINT32 readiSNSDiscoveryConfig(JNIEnv *env, SDMGT_HANDLE handle, jobject jiSNSDiscoveryConfig);

// Writes the settings of the configuration object. Nothing is written when a method or an object is missing; failures
// inside the address, and getters that throw, do not stop it.
SD_UINT32 writeiSNSDiscoveryConfig(JNIEnv *env, SDMGT_HANDLE handle, jobject jiSNSDiscoveryConfig);

// Replaces the HBA object's list of iSNS targets with the adapter's, at most 512.
SD_UINT32 readiSNSTargets(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBAobj);
