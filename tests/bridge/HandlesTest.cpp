// The table of handles, as the native methods show it: what an adapter's slot holds is the handle that reaches the
// library.
#include "ScriptedLibrary.h"
#include "Vm.h"

#include <gtest/gtest.h>

namespace
{
class Handles : public ::testing::Test
{
protected:
    void SetUp() override
    {
        run("initJNINative", 0);
    }
    void TearDown() override
    {
        library().responder = nullptr;
    }

    // Calls a method; the library answers with the status and, when asked for a handle, with this one.
    std::string run(const std::string &method, jint dev, SDMGT_HANDLE handle = 0, SD_UINT32 status = 0)
    {
        library().responder = [=, this](const Operation &operation) {
            asked_ = operation.name + " " + hex(operation.handle);
            return Answer{status, "", handle};
        };
        world_.dev = dev;
        return nativeMethod(method).call(world_.env, world_);
    }

    // The handle that the library is asked with for this adapter.
    std::string handle(jint dev)
    {
        run("getiSCSIEntryNum", dev);
        return asked_;
    }

    static std::string asks(SDMGT_HANDLE handle)
    {
        return "SDGetDDBEntryNum " + hex(handle);
    }

    World world_{nativeMethod("getiSCSIEntryNum")};
    std::string asked_;
};

TEST_F(Handles, eachAdapterHasItsOwn)
{
    for (jint dev = 0; dev < 32; ++dev) {
        EXPECT_EQ(handle(dev), asks(0)) << "a slot not cleared";
        EXPECT_EQ(run("openDevice", dev, 0xabcd0000U + SD_UINT32(dev)), "true");
        EXPECT_EQ(asked_, "SDOpenDeviceiSCSI " + hex(SD_UINT32(dev)));
    }
    for (jint dev = 0; dev < 32; ++dev) {
        EXPECT_EQ(handle(dev), asks(0xabcd0000U + SD_UINT32(dev)));
    }
    run("initJNINative", 0);
    for (jint dev = 0; dev < 32; ++dev) {
        EXPECT_EQ(handle(dev), asks(0)) << dev;
    }
}

TEST_F(Handles, openingFillsASlotAndClosingEmptiesIt)
{
    run("openDevice", 3, 0x11);
    EXPECT_EQ(run("openDevice", 3, 0x22), "true");
    EXPECT_EQ(handle(3), asks(0x22)) << "the handle of the last open counts";
    EXPECT_EQ(run("closeDevice", 3), "true");
    EXPECT_EQ(asked_, "SDCloseDeviceiSCSI 22");
    EXPECT_EQ(handle(3), asks(0));
}

TEST_F(Handles, failuresChangeNothing)
{
    EXPECT_EQ(run("openDevice", 4, 0x33, 1), "false");
    EXPECT_EQ(handle(4), asks(0)) << "a failed open leaves an empty slot empty";
    run("openDevice", 4, 0x44);
    EXPECT_EQ(run("openDevice", 4, 0x55, 1), "false");
    EXPECT_EQ(run("closeDevice", 4, 0, 1), "false");
    EXPECT_EQ(handle(4), asks(0x44)) << "failed opens and closes leave a full slot full";
}

TEST_F(Handles, indicesOutsideReachNeitherTableNorLibrary)
{
    for (jint dev : {-1, 32, 0x10000003}) {
        asked_ = "nothing";
        EXPECT_EQ(run("openDevice", dev, 0x66), "false");
        EXPECT_EQ(run("closeDevice", dev), "false");
        EXPECT_EQ(asked_, "nothing") << dev;
    }
}
} // namespace
