#include "Adapter.h"

#include <utility>

Adapter::Adapter(std::shared_ptr<const AdapterModel> fixed, const Folder &folder)
    : model_(std::move(fixed)), settings(folder, model_->key, factorySettings(*model_)),
      activity(folder, model_->key, factoryActivity(*model_)), port_(openPort(*model_, *this))
{
}

void Adapter::count(const HBAPORTSTATISCSI &more)
{
    activity.count(more);
}

void Adapter::heardOf(const ISCSIIPADDR &address, const MacAddress &mac)
{
    activity.heardOf(address, mac);
}
