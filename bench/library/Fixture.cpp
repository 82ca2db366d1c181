// The benchmark's own hold on its management library, for the Java class Fixture.

#include "com_varden_tavo_iscsi_bench_Fixture.h"

#include "Fixed.h"

extern "C" {

JNIEXPORT void JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_setEntryCount(JNIEnv *, jclass, jint count)
{
    fixedSetEntryCount(static_cast<SD_UINT32>(count));
}

JNIEXPORT jbyteArray JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_takeWritten(JNIEnv *env, jclass)
{
    constexpr jsize SIZE = DDB_SLOTS * sizeof(DEVICEENTRYISCSI);
    jbyteArray bytes = env->NewByteArray(SIZE);
    if (bytes != nullptr) {
        env->SetByteArrayRegion(bytes, 0, SIZE, reinterpret_cast<const jbyte *>(fixedWritten()));
        fixedForgetWritten();
    }
    return bytes;
}
}
