// The Register and Unregister functions through the shared library's exported interface.
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "NorvaneMXRK7Setup.h"

namespace {

void firstInput(int32_t, int32_t, void *) {}
void secondInput(int32_t, int32_t, void *) {}
void firstIndex(int32_t, void *) {}
void secondIndex(int32_t, void *) {}

int contextA;
int contextB;

// One family's functions and exported slots. Callbacks are numbered: 0 none, 1 and 2 two distinct
// functions of the family's type.
struct Family {
  const char *name;
  std::function<int32_t(int32_t productId, int callback, void *context)> reg;
  std::function<int32_t(int32_t productId)> unreg;
  std::function<int()> storedCallback;  // the number of the callback in the slot
  void **contextSlot;
  void **payloadGlobal;
};

template <typename Proc>
int numberOf(Proc stored, Proc first, Proc second) {
  return stored == nullptr ? 0 : stored == first ? 1 : stored == second ? 2 : -1;
}

std::vector<Family> families() {
  return {
      {"input audio",
       [](int32_t productId, int callback, void *context) {
         const NVXInputAudioChangedProc procs[] = {nullptr, firstInput, secondInput};
         return NVX_RegisterInputAudioChangedCallback(productId, procs[callback], context);
       },
       NVX_UnregisterInputAudioChangedCallback,
       [] { return numberOf(InputAudioChangedCallbackFunc[0], &firstInput, &secondInput); }, InputAudioChangedContext,
       &inputAudioInfo},
      {"boost level",
       [](int32_t productId, int callback, void *context) {
         const NVXIndexChangedProc procs[] = {nullptr, firstIndex, secondIndex};
         return NVX_RegisterBoostLevelChangedCallback(productId, procs[callback], context);
       },
       NVX_UnregisterBoostLevelChangedCallback,
       [] { return numberOf(BoostLevelChangedCallbackFunc[0], &firstIndex, &secondIndex); }, BoostLevelChangedContext,
       &boostLevelInfo},
  };
}

TEST(CallbackApiTest, OnlyProductZeroIsAcceptedAndOtherProductsChangeNothing) {
  for (const Family &f : families()) {
    SCOPED_TRACE(f.name);
    ASSERT_EQ(f.reg(0, 2, &contextB), NVX_OK);
    int marker = 0;
    *f.payloadGlobal = &marker;
    for (const int32_t productId : {1, -1, 2, INT32_MIN, INT32_MAX}) {
      EXPECT_EQ(f.reg(productId, 1, &contextA), NVX_ERROR) << productId;
      EXPECT_EQ(f.reg(productId, 0, &contextA), NVX_ERROR) << productId;
      EXPECT_EQ(f.unreg(productId), NVX_ERROR) << productId;
    }
    EXPECT_EQ(f.storedCallback(), 2);
    EXPECT_EQ(f.contextSlot[0], &contextB);
    EXPECT_EQ(*f.payloadGlobal, &marker);
    *f.payloadGlobal = nullptr;
    f.unreg(0);
  }
}

TEST(CallbackApiTest, RegisterStoresUnregisterEmptiesTheCallbackOnly) {
  for (const Family &f : families()) {
    SCOPED_TRACE(f.name);
    int marker = 0;
    *f.payloadGlobal = &marker;
    ASSERT_EQ(f.reg(0, 1, &contextA), NVX_OK);
    EXPECT_EQ(f.storedCallback(), 1);
    EXPECT_EQ(f.contextSlot[0], &contextA);
    EXPECT_EQ(*f.payloadGlobal, nullptr) << "Register drops the last posted payload";

    // A later Register replaces the pair.
    ASSERT_EQ(f.reg(0, 2, &contextB), NVX_OK);
    EXPECT_EQ(f.storedCallback(), 2);
    EXPECT_EQ(f.contextSlot[0], &contextB);

    EXPECT_EQ(f.unreg(0), NVX_OK);
    EXPECT_EQ(f.storedCallback(), 0);
    EXPECT_EQ(f.contextSlot[0], &contextB) << "Unregister keeps the context";
    EXPECT_EQ(f.unreg(0), NVX_OK) << "Unregister twice";

    // A null callback acts as Unregister: the context passed along is not stored.
    ASSERT_EQ(f.reg(0, 1, &contextA), NVX_OK);
    *f.payloadGlobal = &marker;
    EXPECT_EQ(f.reg(0, 0, &contextB), NVX_OK);
    EXPECT_EQ(f.storedCallback(), 0);
    EXPECT_EQ(f.contextSlot[0], &contextA);
    EXPECT_EQ(*f.payloadGlobal, &marker) << "a null callback does not register";
    *f.payloadGlobal = nullptr;
  }
}

TEST(CallbackApiTest, RegisteringTheOtherFamilyLeavesThisOneAlone) {
  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, firstInput, &contextA), NVX_OK);
  int marker = 0;
  inputAudioInfo = &marker;
  ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, firstIndex, &contextB), NVX_OK);
  EXPECT_EQ(InputAudioChangedCallbackFunc[0], firstInput);
  EXPECT_EQ(InputAudioChangedContext[0], &contextA);
  EXPECT_EQ(inputAudioInfo, &marker);
  ASSERT_EQ(NVX_UnregisterBoostLevelChangedCallback(0), NVX_OK);
  EXPECT_EQ(InputAudioChangedCallbackFunc[0], firstInput);
  inputAudioInfo = nullptr;
  NVX_UnregisterInputAudioChangedCallback(0);
  // The reserved MIDI slots are never touched by these functions.
  EXPECT_EQ(MidiChannelChangedCallbackFunc[0], nullptr);
  EXPECT_EQ(MidiKeyModeChangedCallbackFunc[0], nullptr);
  EXPECT_EQ(midiChannelInfo, nullptr);
  EXPECT_EQ(midiKeyModeInfo, nullptr);
}

// Connections to the bus whose peer is this process, as the bus daemon sees them.
int connectionsOfThisProcess(sd_bus *bus) {
  sd_bus_message *reply = nullptr;
  sd_bus_error error = SD_BUS_ERROR_NULL;
  if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListNames",
                         &error, &reply, "") < 0) {
    sd_bus_error_free(&error);
    return -1;
  }
  std::vector<std::string> names;
  const char *name = nullptr;
  sd_bus_message_enter_container(reply, 'a', "s");
  while (sd_bus_message_read(reply, "s", &name) > 0) {
    if (name[0] == ':') names.emplace_back(name);
  }
  sd_bus_message_unref(reply);
  int count = 0;
  for (const std::string &unique : names) {
    uint32_t pid = 0;
    sd_bus_message *pidReply = nullptr;
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                           "GetConnectionUnixProcessID", &error, &pidReply, "s", unique.c_str()) >= 0 &&
        sd_bus_message_read(pidReply, "u", &pid) > 0 && pid == static_cast<uint32_t>(getpid())) {
      ++count;
    }
    sd_bus_error_free(&error);
    sd_bus_message_unref(pidReply);
  }
  return count;
}

TEST(CallbackApiTest, OneObserverConnectionPerProcessMadeOnlyByASuccessfulRegister) {
  ASSERT_NE(getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr) << "run under dbus-run-session";
  sd_bus *bus = nullptr;
  ASSERT_GE(sd_bus_open_user(&bus), 0);
  const int before = connectionsOfThisProcess(bus);  // our own query connection, and the observer
  ASSERT_GE(before, 1);                              // if an earlier test of this process made it
  EXPECT_EQ(NVX_RegisterInputAudioChangedCallback(1, firstInput, nullptr), NVX_ERROR);
  EXPECT_EQ(NVX_RegisterBoostLevelChangedCallback(0, nullptr, nullptr), NVX_OK);
  EXPECT_EQ(connectionsOfThisProcess(bus), before);

  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, firstInput, nullptr), NVX_OK);
  ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, firstIndex, nullptr), NVX_OK);
  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, firstInput, nullptr), NVX_OK);
  EXPECT_EQ(connectionsOfThisProcess(bus), 2) << "the query connection and one observer";
  NVX_UnregisterInputAudioChangedCallback(0);
  NVX_UnregisterBoostLevelChangedCallback(0);
  sd_bus_flush_close_unref(bus);
}

}  // namespace
