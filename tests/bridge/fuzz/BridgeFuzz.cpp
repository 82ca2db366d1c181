// A fuzz target for the converters and the walks over what the management library hands out: the input chooses the
// native method and then supplies the statuses, the counts and the bytes of every record, in the order in which they
// are asked for. The Java VM is real.
#include "../ScriptedLibrary.h"
#include "../Vm.h"
#include "../WatchedRuntime.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace
{
// The next piece of the input; zeros when it has run out.
std::string take(std::string_view &input, std::size_t size)
{
    std::string out(input.substr(0, size));
    input.remove_prefix(out.size());
    out.resize(size);
    return out;
}

std::uint8_t takeByte(std::string_view &input)
{
    return std::uint8_t(take(input, 1)[0]);
}

// A number that is often small or at a border, and sometimes anything.
SD_UINT32 takeNumber(std::string_view &input)
{
    SD_UINT32 any = takeByte(input);
    if (any >= 0xf0) {
        std::memcpy(&any, take(input, sizeof any).data(), sizeof any);
    }
    return any;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    quietRuntime(true);
    std::string_view input(reinterpret_cast<const char *>(data), size);
    const NativeMethod &method = nativeMethods()[takeByte(input) % nativeMethods().size()];
    World world(method);
    library().responder = [&](const Operation &operation) {
        Answer answer;
        answer.status = takeByte(input) < 0xe0 ? 0 : takeNumber(input);
        answer.count = takeNumber(input);
        // A short record is repeated over the whole field: large tables are reached by small inputs.
        std::string bytes = take(input, std::min<std::size_t>(operation.outSize, 1 + 4U * takeByte(input)));
        while (!bytes.empty() && bytes.size() < operation.outSize) {
            bytes += bytes;
        }
        answer.bytes = bytes.substr(0, operation.outSize);
        if (operation.name == "SDSendScsiReportLunsCmdiSCSI" && takeByte(input) < 0xf0) {
            // A list length up to 4095; most other lengths are refused at once.
            answer.bytes.replace(0, 3, {0, 0, char(takeByte(input) % 16)});
        }
        return answer;
    };
    const Outcome outcome = call(world, [](JniWatch &watch) { watch.recording = false; });
    library().responder = nullptr;
    quietRuntime(false);
    if (!outcome.left.empty()) {
        giveUp(std::string(method.name) + ": " + outcome.left);
    }
    return 0;
}
