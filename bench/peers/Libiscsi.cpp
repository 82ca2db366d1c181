// REPORT LUNS by libiscsi alone: the two commands that the bridge sends for a list that fits the smaller area, over a
// session of its own, and nothing else.

#include "com_varden_tavo_iscsi_bench_Libiscsi.h"
#include "vdsdm/ScsiPassThrough.h"

#include <iscsi/iscsi.h>
#include <iscsi/scsi-lowlevel.h>
#include <jni.h>
#include <poll.h>

#include <array>
#include <memory>

namespace
{

constexpr int FAILED = -1;
constexpr int PENDING = -2;
constexpr int LONGEST_WAIT = 10000; // milliseconds

struct FreeTask {
    void operator()(scsi_task *task) const
    {
        scsi_free_scsi_task(task);
    }
};

iscsi_context *context;

void onAnswer(iscsi_context * /*context*/, int status, void * /*data*/, void *answer)
{
    *static_cast<int *>(answer) = status;
}

// Serves the connection until the answer is there.
bool await(const int &answer)
{
    while (answer == PENDING) {
        pollfd wait{iscsi_get_fd(context), static_cast<short>(iscsi_which_events(context)), 0};
        if (poll(&wait, 1, LONGEST_WAIT) <= 0 || iscsi_service(context, wait.revents) != 0) {
            return false;
        }
    }
    return answer == SCSI_STATUS_GOOD;
}

bool reportLuns()
{
    constexpr int commandLength = 12;
    constexpr int allocation = REPORT_LUNS_SMALL_SIZE;
    std::array<SD_UINT8, REPORT_LUNS_SMALL_SIZE> area{};
    std::array<unsigned char, SCSI_CDB_MAX_SIZE> command{0xA0};
    command[8] = allocation >> 8;
    command[9] = allocation & 0xFF;
    const std::unique_ptr<scsi_task, FreeTask> task(
        scsi_create_task(commandLength, command.data(), SCSI_XFER_READ, allocation));
    int answer = PENDING;
    return task && scsi_task_add_data_in_buffer(task.get(), allocation, area.data()) == 0
           && iscsi_scsi_command_async(context, 0, task.get(), onAnswer, nullptr, &answer) == 0 && await(answer);
}

} // namespace

jboolean Java_com_varden_tavo_iscsi_bench_Libiscsi_login(JNIEnv *env, jclass, jstring portal, jstring target)
{
    const char *portalText = env->GetStringUTFChars(portal, nullptr);
    const char *targetText = env->GetStringUTFChars(target, nullptr);
    context = iscsi_create_context("iqn.2004-08.com.varden:bench.libiscsi");
    iscsi_set_noautoreconnect(context, 1);
    iscsi_set_session_type(context, ISCSI_SESSION_NORMAL);
    iscsi_set_targetname(context, targetText);
    int answer = PENDING;
    // Connects, logs in, and takes the unit attention that follows.
    const bool done = iscsi_full_connect_async(context, portalText, 0, onAnswer, &answer) == 0 && await(answer);
    env->ReleaseStringUTFChars(portal, portalText);
    env->ReleaseStringUTFChars(target, targetText);
    return done ? JNI_TRUE : JNI_FALSE;
}

jint Java_com_varden_tavo_iscsi_bench_Libiscsi_reportLUNs(JNIEnv *, jclass)
{
    return reportLuns() && reportLuns() ? 0 : FAILED;
}
