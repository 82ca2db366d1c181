// A fuzz target for the converters and the walks over what the management library hands out: the input chooses the
// native method and then supplies the statuses, the counts and the bytes of every record, in the order in which they
// are asked for. The Java VM is real.
#include "../ScriptedLibrary.h"
#include "../Vm.h"
#include "../WatchedRuntime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
// Takes the input piece by piece; zeros when it has run out.
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size) : at_(data), left_(size) {}

    std::string take(std::size_t size)
    {
        std::string out(size, '\0');
        std::size_t taken = std::min(size, left_);
        std::memcpy(out.data(), at_, taken);
        at_ += taken;
        left_ -= taken;
        return out;
    }

    std::uint8_t byte()
    {
        return std::uint8_t(take(1)[0]);
    }

private:
    const std::uint8_t *at_;
    std::size_t left_;
};

// A number that is often small or at a border, and sometimes anything.
SD_UINT32 number(Input &input)
{
    std::uint8_t kind = input.byte();
    if (kind < 0xf0) {
        return kind;
    }
    SD_UINT32 any = 0;
    std::memcpy(&any, input.take(sizeof any).data(), sizeof any);
    return any;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    quietRuntime(true);
    Input input(data, size);
    const NativeMethod &method = nativeMethods()[input.byte() % nativeMethods().size()];
    World world(method);
    library().responder = [&](const Operation &operation) {
        Answer answer;
        answer.status = input.byte() < 0xe0 ? 0 : number(input);
        answer.count = number(input);
        // A short record is repeated over the whole field: large tables are reached by small inputs.
        std::string bytes = input.take(std::min<std::size_t>(operation.outSize, 1 + 4U * input.byte()));
        while (!bytes.empty() && bytes.size() < operation.outSize) {
            bytes += bytes;
        }
        answer.bytes = bytes.substr(0, operation.outSize);
        if (operation.name == "SDSendScsiReportLunsCmdiSCSI" && input.byte() < 0xf0) {
            // A list length up to 4095; most other lengths are refused at once.
            answer.bytes.replace(0, 3, {0, 0, char(input.byte() % 16)});
        }
        return answer;
    };
    Outcome outcome = call(world, [](JniWatch &watch) { watch.recording = false; });
    library().responder = nullptr;
    if (!outcome.left.empty()) {
        std::fprintf(stderr, "%s: %s", method.name, outcome.left.c_str());
        std::abort();
    }
    return 0;
}
