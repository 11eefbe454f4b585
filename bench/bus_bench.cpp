// The library beside an inventory daemon on a message bus of its own: the same properties into the same
// records.
#include <benchmark/benchmark.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>
#include <thread>

#include "bus.h"
#include "comparison.h"
#include "process.h"

using bench::Process;
using namespace bench::bus;

namespace {

constexpr int kAdapters = 256;
constexpr char kConfiguration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>@ADDRESS@</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

struct Unref {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, Unref>;
using Message = std::unique_ptr<sd_bus_message, Unref>;

Message call(sd_bus* bus, const char* destination, const char* path, const char* interface,
             const char* method, const char* argument) {
  sd_bus_message* reply = nullptr;
  sd_bus_call_method(bus, destination, path, interface, method, nullptr, &reply,
                     argument != nullptr ? "s" : "", argument);
  return Message(reply);
}

// A bus with a daemon that offers the adapters of the inventory.
class Peer {
 public:
  Peer()
      : inventory_(bench::inventory(kAdapters)),
        folder_(std::filesystem::path(inventory_.path()).parent_path()) {
    const std::string address = "unix:path=" + (folder_ / "bus").string();
    std::string configuration = kConfiguration;
    configuration.replace(configuration.find("@ADDRESS@"), std::strlen("@ADDRESS@"), address);
    std::ofstream(folder_ / "bus.conf") << configuration;
    broker_ = std::make_unique<Process>(std::vector<std::string>{
        "dbus-daemon", "--nofork", "--nopidfile", "--config-file=" + (folder_ / "bus.conf").string()});
    wait_until([&] { return connect(address); }, "a bus");
    daemon_ = std::make_unique<Process>(
        std::vector<std::string>{ZYMDB_BUS_PEER, address, std::to_string(kAdapters)});
    wait_until([&] { return is_served(); }, "a daemon on the bus");
  }

  sd_bus* bus() { return bus_.get(); }

 private:
  template <class Condition>
  static void wait_until(Condition condition, const char* what) {
    for (int tries = 0; tries < 500; ++tries) {
      if (condition()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    throw std::runtime_error(std::string("no ") + what);
  }

  bool connect(const std::string& address) {
    sd_bus* opened = nullptr;
    sd_bus_new(&opened);
    bus_.reset(opened);
    return sd_bus_set_address(opened, address.c_str()) >= 0 && sd_bus_set_bus_client(opened, 1) >= 0 &&
           sd_bus_start(opened) >= 0 && is_owned("org.freedesktop.DBus");
  }
  bool is_served() { return is_owned(kName); }
  bool is_owned(const char* name) {
    const Message reply = call(bus_.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "NameHasOwner", name);
    int owned = 0;
    return reply != nullptr && sd_bus_message_read(reply.get(), "b", &owned) >= 0 && owned != 0;
  }

  bench::Inventory& inventory_;
  std::filesystem::path folder_;
  std::unique_ptr<Process> broker_;
  std::unique_ptr<Process> daemon_;
  Bus bus_;
};

// One property, a{sv}'s entry, into its field; those that the record does not have are passed over.
void read_property(sd_bus_message* message, std::span<const Property> properties, void* record) {
  const char* name = nullptr;
  sd_bus_message_read_basic(message, 's', &name);
  for (const Property& property : properties) {
    if (std::strcmp(property.name, name) != 0) continue;
    char* const field = static_cast<char*>(record) + property.offset;
    sd_bus_message_enter_container(message, 'v', property.type);
    if (property.type[0] == 's') {
      const char* text = "";
      sd_bus_message_read_basic(message, 's', &text);
      const size_t length = strnlen(text, property.size - 1);
      std::memcpy(field, text, length);
      field[length] = '\0';
    } else {
      sd_bus_message_read_basic(message, property.type[0], field);
    }
    sd_bus_message_exit_container(message);
    return;
  }
  sd_bus_message_skip(message, "v");
}

void read_properties(sd_bus_message* message, std::span<const Property> properties, void* record) {
  sd_bus_message_enter_container(message, 'a', "{sv}");
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    read_property(message, properties, record);
    sd_bus_message_exit_container(message);
  }
  sd_bus_message_exit_container(message);
}

// The adapters among an object manager's objects; it lists them in no order.
size_t read_objects(sd_bus_message* message, _ZYMDB_PCI_Adapter* adapters) {
  size_t count = 0;
  sd_bus_message_enter_container(message, 'a', "{oa{sa{sv}}}");
  while (sd_bus_message_enter_container(message, 'e', "oa{sa{sv}}") > 0) {
    sd_bus_message_skip(message, "o");
    sd_bus_message_enter_container(message, 'a', "{sa{sv}}");
    while (sd_bus_message_enter_container(message, 'e', "sa{sv}") > 0) {
      const char* interface = nullptr;
      sd_bus_message_read_basic(message, 's', &interface);
      if (std::strcmp(interface, kAdapter) == 0 && count < kAdapters)
        read_properties(message, kAdapterProperties, &adapters[count++]);
      else
        sd_bus_message_skip(message, "a{sv}");
      sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
    sd_bus_message_exit_container(message);
  }
  return count;
}

bool is_function(const _ZYMDB_PCI_Generic& function, int adapter) {
  return function.BusNo == adapter && function.PCIeType == 3 &&
         std::strcmp(function.SlotDesignation, "PCIe Slot") == 0;
}

bool is_list(size_t count, const _ZYMDB_PCI_Adapter* adapters) {
  return count == kAdapters && adapters[kAdapters - 1].PCIKey >> 16 == 1 &&
         std::strcmp(adapters[kAdapters - 1].ConnectorTypeName, "PCI-E Gen 3 x16") == 0;
}

int adapter_of(int turn) {
  return bench::row_of(turn, kAdapters);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Peer peer;
  sd_bus* const bus = peer.bus();
  bench::add("one adapter", kAdapters,
             {{bench::kLibrary,
               [](int turn) {
                 _ZYMDB_PCI_Generic function{};
                 zymdb_get_pci_generic_info(bench::function_key(adapter_of(turn)), &function);
                 return is_function(function, adapter_of(turn));
               }},
              {bench::kBus, [bus](int turn) {
                 _ZYMDB_PCI_Generic function{};
                 const Message reply = call(bus, kName, function_path(adapter_of(turn)).c_str(),
                                            "org.freedesktop.DBus.Properties", "GetAll", kFunction);
                 if (reply != nullptr) read_properties(reply.get(), kFunctionProperties, &function);
                 return is_function(function, adapter_of(turn));
               }}});
  bench::add(
      "adapter list", kAdapters,
      {{bench::kLibrary,
        [](int) {
          _ZYMDB_PCI_Adapter_List list{};
          zymdb_get_pci_adapter_list(&list);
          const bool is_right = is_list(list.count, list.adapters);
          std::free(list.adapters);
          return is_right;
        }},
       {bench::kBus, [bus](int) {
          const std::unique_ptr<_ZYMDB_PCI_Adapter[]> adapters(new _ZYMDB_PCI_Adapter[kAdapters]());
          const Message reply =
              call(bus, kName, kRoot, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", nullptr);
          return reply != nullptr && is_list(read_objects(reply.get(), adapters.get()), adapters.get());
        }}});
  benchmark::RunSpecifiedBenchmarks();
}
