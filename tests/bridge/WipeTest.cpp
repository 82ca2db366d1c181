// No CHAP secret stays in memory that the bridge gives back: the table read from the adapter and the text made of each
// secret. The table that is written lies on the heap, where every call looks.
#include "JavaAccess.h"
#include "ScriptedLibrary.h"
#include "Vm.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"

#include <gtest/gtest.h>

#include <array>

namespace
{
constexpr unsigned char SECRET = 0x73;

// Bytes of memory that a function has given back, read before anything else can use it.
[[gnu::no_sanitize_address, gnu::noinline]] std::size_t secretsIn(const void *memory, std::size_t size)
{
    const auto *bytes = static_cast<const volatile unsigned char *>(memory);
    std::size_t found = 0;
    for (std::size_t i = 0; i < size; ++i) {
        found += bytes[i] == SECRET ? 1 : 0;
    }
    return found;
}

TEST(Wipe, theTableThatWasRead)
{
    constexpr std::size_t size = CHAP_CAPACITY * sizeof(CHAPTABLE);
    World world(nativeMethod("getCHAPTableData"));
    const void *table = nullptr;
    library().responder = [&](const Operation &operation) -> std::optional<Answer> {
        if (operation.name == "SDGetCHAPEntryNum") {
            return Answer{0, "", CHAP_CAPACITY};
        }
        // The table is full of secrets, but no record is counted: nothing but the wipe touches it afterwards.
        table = operation.out;
        return Answer{0, std::string(size, char(SECRET)), 0};
    };
    Java_com_varden_tavo_iscsi_jni_ApiWrapper_getCHAPTableData(world.env, nullptr, world.dev, world.object("HBA"));
    const std::size_t left = secretsIn(table, size);
    library().responder = nullptr;
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(left, 0U);
}

// What NewStringUTF was handed.
const char *lastText = nullptr;

TEST(Wipe, theTextOfASecret)
{
    const auto noText = [](JNIEnv *, const char *text) -> jstring {
        lastText = text;
        return nullptr;
    };
    std::array<SD_UINT8, 100> secret{};
    secret.fill(SECRET);
    std::size_t left = secret.size();
    withStub(&JNINativeInterface_::NewStringUTF, noText, [&](JNIEnv *env) {
        newText(env, secret);
        left = secretsIn(lastText, secret.size());
    });
    EXPECT_EQ(left, 0U);
}
} // namespace
