#include "NodeInfo.h"

#include <cstdio>

#include "JavaAccess.h"

// Hands an IPAddr object to the setter of its owner that the selector chooses. The message of setIPAddress serves all
// setters but one.
static bool setAddress(JavaObject &owner, jobject address, int selector)
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

void setIPAddr(JNIEnv *env, jobject jObj, const ISCSIIPADDR &addr, int type)
{
    const SD_UINT32 status = withClassNamed(env, IP_ADDR_CLASS, "Find class call failed!\n", [&](jclass ipAddrClass) {
        return withNew(env, ipAddrClass, "NewObject failed!\n", [&](JavaObject &address) {
            if (!setShorts(address, "setAddress", addr.IPAddress, named)) {
                return;
            }
            address.status =
                withClassOf(env, jObj, [&](JavaObject &owner) { return setAddress(owner, address.object, type); });
        });
    });
    if (status != 0) {
        forgetOwnError(env);
    }
}

void getIPAddr(JNIEnv *env, jobject jIPObj, ISCSIIPADDR &addr)
{
    convertAndCarryOn(env, jIPObj, "NULL jIPObj!\n", [&](JavaObject &address) {
        jmethodID getAddressElement =
            lookUp(address, "getAddressElement", "(S)S", "GetMethodID  getAddress call failed!\n");
        if (getAddressElement == nullptr) {
            return;
        }
        jshort i = 0;
        for (SD_UINT8 &byte : addr.IPAddress) {
            byte = static_cast<SD_UINT8>(env->CallShortMethod(jIPObj, getAddressElement, i));
            i++;
        }
    });
}

void setNodeInfo(JNIEnv *env, jobject jObj, const NODEINFOISCSI &node)
{
    convertAndCarryOn(env, jObj, "NULL javaNodeInfoObject!2\n", [&](JavaObject &object) {
        if (!setText(object, "setiSCSIName", node.iSCSIName, anonymous, handNullOver)
            || !setText(object, "setAlias", node.Alias, anonymous, handNullOver)) {
            return;
        }
        setIPAddr(env, jObj, node.IPAddr, ADDRESS_OWN);
        setInt(object, "setPortalCount", node.PortalCount, named);
    });
}

void getNodeInfo(JNIEnv *env, jobject javaNodeInfoObject, NODEINFOISCSI &node)
{
    convertAndCarryOn(env, javaNodeInfoObject, "NULL javaNodeInfoObject!3\n", [&](JavaObject &object) {
        return getText(object, "getiSCSIName", node.iSCSIName, twoBlanks)
               && getText(object, "getAlias", node.Alias, twoBlanks)
               && withFetched(object, "getIPAddress", GIVES_IP_ADDR, "GetMethodID  getIPAddr call failed!\n",
                              "NULL javaIPObject!\n", [&](jobject address) { getIPAddr(env, address, node.IPAddr); })
               && getInt(object, "getPortalCount", node.PortalCount, named);
    });
}

void printfIPAddr(const ISCSIIPADDR &ipAddr)
{
    std::printf("IP Addr ");
    for (int i = 0; i < 4; i++) {
        std::printf("%d.", ipAddr.IPAddress[i]);
    }
    std::printf("\n");
}
