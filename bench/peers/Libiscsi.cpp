// REPORT LUNS by libiscsi alone: the two commands that the bridge sends for a list that fits the smaller area, over a
// session of its own, and nothing else.

#include "com_varden_tavo_iscsi_bench_RealTarget.h"
#include "vdsdm/ScsiPassThrough.h"

#include <iscsi/iscsi.h>
#include <iscsi/scsi-lowlevel.h>
#include <jni.h>

static iscsi_context *context;

// Sends one command and waits for its answer.
static bool reportLuns()
{
    scsi_task *task = iscsi_reportluns_sync(context, 0, REPORT_LUNS_SMALL_SIZE);
    const bool good = task != nullptr && task->status == SCSI_STATUS_GOOD && task->datain.size > 0;
    if (task != nullptr) {
        scsi_free_scsi_task(task);
    }
    return good;
}

// Connects, logs in, and takes the unit attention that follows.
jboolean Java_com_varden_tavo_iscsi_bench_RealTarget_loginAlone(JNIEnv *env, jclass, jstring portal, jstring target)
{
    const char *portalText = env->GetStringUTFChars(portal, nullptr);
    const char *targetText = env->GetStringUTFChars(target, nullptr);
    context = iscsi_create_context("iqn.2004-08.com.varden:bench.libiscsi");
    iscsi_set_noautoreconnect(context, 1);
    iscsi_set_session_type(context, ISCSI_SESSION_NORMAL);
    iscsi_set_targetname(context, targetText);
    const int failed = iscsi_full_connect_sync(context, portalText, 0);
    env->ReleaseStringUTFChars(portal, portalText);
    env->ReleaseStringUTFChars(target, targetText);
    return failed == 0 ? JNI_TRUE : JNI_FALSE;
}

jint Java_com_varden_tavo_iscsi_bench_RealTarget_reportLUNsAlone(JNIEnv *, jclass)
{
    return reportLuns() && reportLuns() ? 0 : -1;
}
