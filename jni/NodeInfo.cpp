#include "NodeInfo.h"

#include "JavaAccess.h"

#include <cstdio>

// Hands an IPAddr object to the setter of its owner that the selector chooses. The message of setIPAddress serves all
// setters but one.
static void setAddress(JavaObject &owner, jobject address, int selector)
{
    constexpr Message missing = "GetMethodID setIPAddress - Obj call failed!\n";
    switch (selector) {
    case ADDRESS_GATEWAY:
        return setObject(owner, "setGateway", TAKES_IP_ADDR, address, missing);
    case ADDRESS_SUBNET_MASK:
        return setObject(owner, "setSubnetMask", TAKES_IP_ADDR, address, missing);
    case ADDRESS_PRIMARY_DNS:
        return setObject(owner, "setPrimaryDNS", TAKES_IP_ADDR, address, missing);
    case ADDRESS_SECONDARY_DNS:
        return setObject(owner, "setSecondaryDNS", TAKES_IP_ADDR, address, missing);
    case ADDRESS_SLP_DA:
        return setObject(owner, "setSlpDa", TAKES_IP_ADDR, address, namedObj);
    default:
        return setObject(owner, "setIPAddress", TAKES_IP_ADDR, address, missing);
    }
}

// Makes the IPAddr object and hands it over.
static SD_UINT32 giveAddress(JNIEnv *env, jobject jObj, const ISCSIIPADDR &addr, int selector)
{
    const auto ipAddrClass = findClass(env, IP_ADDR_CLASS, "Find class call failed!\n");
    if (ipAddrClass == nullptr) {
        return ERR_JNI_CLASS;
    }
    const auto made = newObject(env, ipAddrClass.get(), "NewObject failed!\n");
    JavaObject address = objectWith(env, made.get(), ipAddrClass.get());
    setShorts(address, "setAddress", addr.IPAddress, named);
    if (address.status != 0) {
        return address.status;
    }
    JavaObject owner = objectOf(env, jObj);
    setAddress(owner, made.get(), selector);
    return owner.status;
}

void setIPAddr(JNIEnv *env, jobject jObj, const ISCSIIPADDR &addr, int type)
{
    if (giveAddress(env, jObj, addr, type) != 0) {
        forgetOwnError(env);
    }
}

void getIPAddr(JNIEnv *env, jobject jIPObj, ISCSIIPADDR &addr)
{
    JavaObject address = objectOrNull(env, jIPObj, "NULL jIPObj!\n");
    if (jmethodID getter = lookUp(address, "getAddressElement", "(S)S", "GetMethodID  getAddress call failed!\n")) {
        jshort i = 0;
        for (SD_UINT8 &byte : addr.IPAddress) {
            byte = static_cast<SD_UINT8>(env->CallShortMethod(jIPObj, getter, i));
            ++i;
        }
    }
    carryOn(address);
}

void setNodeInfo(JNIEnv *env, jobject jObj, const NODEINFOISCSI &node)
{
    JavaObject object = objectOrNull(env, jObj, "NULL javaNodeInfoObject!2\n");
    setText(object, "setiSCSIName", node.iSCSIName, anonymous, handNullOver);
    setText(object, "setAlias", node.Alias, anonymous, handNullOver);
    if (object.status == 0) {
        setIPAddr(env, jObj, node.IPAddr, ADDRESS_OWN);
    }
    setInt(object, "setPortalCount", node.PortalCount, named);
    carryOn(object);
}

void getNodeInfo(JNIEnv *env, jobject javaNodeInfoObject, NODEINFOISCSI &node)
{
    JavaObject object = objectOrNull(env, javaNodeInfoObject, "NULL javaNodeInfoObject!3\n");
    getText(object, "getiSCSIName", node.iSCSIName, twoBlanks);
    getText(object, "getAlias", node.Alias, twoBlanks);
    getAddress(object, "getIPAddress", "GetMethodID  getIPAddr call failed!\n", node.IPAddr);
    getInt(object, "getPortalCount", node.PortalCount, named);
    carryOn(object);
}

void getAddress(JavaObject &owner, const char *getter, Message message, ISCSIIPADDR &addr)
{
    if (const auto address = fetch(owner, getter, GIVES_IP_ADDR, message, "NULL javaIPObject!\n")) {
        getIPAddr(owner.env, address.get(), addr);
    }
}

void printfIPAddr(const ISCSIIPADDR &ipAddr)
{
    std::printf("IP Addr ");
    for (int i = 0; i < 4; ++i) {
        std::printf("%d.", ipAddr.IPAddress[i]);
    }
    std::printf("\n");
}
