// Where an adapter keeps its files.
#include "Adapter.h"
#include "Fields.h"

namespace
{

FlashHeader headerOf(const AdapterModel &model, std::string_view magic)
{
    FlashHeader header{};
    std::copy_n(magic.data(), sizeof header.magic, header.magic);
    header.formatVersion = FLASH_FORMAT;
    header.adapterIndex = model.index;
    setText(header.serialNumber, model.serialNumber);
    return header;
}

std::string fileName(const AdapterModel &model, const std::string &folder, const char *suffix)
{
    return folder + "adapter" + std::to_string(model.index) + suffix;
}

} // namespace

Adapter::Adapter(const AdapterModel &fixed, const std::string &folder)
    : model(fixed),
      settings(FlashFile(fileName(fixed, folder, ".flash"), headerOf(fixed, "TAVOFLSH"), true), factorySettings(fixed)),
      activity(FlashFile(fileName(fixed, folder, ".counters"), headerOf(fixed, "TAVOCNTS"), false),
               factoryActivity(fixed))
{
}
