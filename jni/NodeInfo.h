// IP addresses and node identities, both ways. The converters print their failures and return nothing: the caller
// carries on as if they had succeeded.
#pragma once

#include "JavaAccess.h"
#include "vdsdm/NodeInfo.h"

#include <jni.h>

// Which setter of its owner receives an address. Every other value chooses setIPAddress too.
enum AddressSelector : int {
    ADDRESS_OWN = 0,           // setIPAddress
    ADDRESS_GATEWAY = 1,       // setGateway
    ADDRESS_SUBNET_MASK = 2,   // setSubnetMask
    ADDRESS_PRIMARY_DNS = 3,   // setPrimaryDNS
    ADDRESS_SECONDARY_DNS = 4, // setSecondaryDNS
    ADDRESS_SLP_DA = 5,        // setSlpDa
};

// Hands the 16 address bytes to the owner as a new IPAddr object. Type and Reserved do not cross.
void setIPAddr(JNIEnv *env, jobject jObj, const ISCSIIPADDR &addr, int type);

// Fills the 16 address bytes from an IPAddr object, which may be null.
void getIPAddr(JNIEnv *env, jobject jIPObj, ISCSIIPADDR &addr);

// A row: fetches an IPAddr object from its owner's getter and fills the 16 address bytes from it.
void getAddress(JavaObject &owner, const char *getter, Message message, ISCSIIPADDR &addr);

// Copies name, alias, address and portal count into a node object or the HBA object.
void setNodeInfo(JNIEnv *env, jobject jObj, const NODEINFOISCSI &node);

// Fills name, alias, address and portal count from a node object.
void getNodeInfo(JNIEnv *env, jobject javaNodeInfoObject, NODEINFOISCSI &node);

// Prints an address as IPv4, for a developer at the debugger.
void printfIPAddr(const ISCSIIPADDR &ipAddr);
