// An open adapter: what is fixed about it, its settings, what it has counted and logged, and its port.
#pragma once

#include "ActivityStore.h"
#include "Inventory.h"
#include "SettingsStore.h"
#include "TargetPort.h"

#include <array>
#include <atomic>
#include <memory>

class Adapter : private PortObserver
{
public:
    Adapter(std::shared_ptr<const AdapterModel> fixed, const Folder &folder);

    const AdapterModel &model() const
    {
        return *model_;
    }
    TargetPort &port()
    {
        return *port_;
    }

private:
    void count(const HBAPORTSTATISCSI &more) override;
    void heardOf(const ISCSIIPADDR &address, const MacAddress &mac) override;

    const std::shared_ptr<const AdapterModel> model_;

public:
    SettingsStore settings;
    ActivityStore activity;
    // How many logins are under way for each entry of the device database.
    std::array<std::atomic<int>, DDB_SLOTS> loginsUnderWay{};

private:
    // Last, so that it goes first: what its threads report finds the rest in place.
    const std::unique_ptr<TargetPort> port_;
};
