// The registries of callbacks: what takes a place, what is taken back, and when the handler is connected.
#include "bus/news.h"
#include "support/log_capture.h"
#include "support/platform.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <ostream>

using namespace support;

namespace {

char data[] = "data";

void other_result(pvr_service_result, void *) {}
void other_result_pointer(pvr_service_result *, void *) {}
void other_third(pvr_result_third, void *) {}
void other_state(int, void *) {}
void other_signal(pvr_service_signal, void *) {}
void other_signal_pointer(pvr_service_signal *, void *) {}

/// A slot with its calls; the function of this test's own in each, another one, and null.
struct SlotCalls {
    const char *name;
    int (*add)();
    int (*add_null)();
    int (*remove)();
    int (*remove_other)();
    int (*remove_null)();
    bool removes_any; ///< whichever function is given
};

template <auto Add, auto Remove, auto Function, auto Other>
constexpr SlotCalls slot(const char *name, bool removes_any)
{
    return {name,
            [] { return Add(Function, data); },
            [] { return Add(nullptr, data); },
            [] { return Remove(Function); },
            [] { return Remove(Other); },
            [] { return Remove(nullptr); },
            removes_any};
}

const SlotCalls of_result =
    slot<svc_pvr_register_result_pvr_cb, svc_pvr_unregister_result_pvr_cb, on_result, other_result>("Result", false);
const SlotCalls of_result_pointer = slot<svc_pvr_register_result_pvr_point_cb, svc_pvr_unregister_result_pvr_point_cb,
                                         on_result_pointer, other_result_pointer>("ResultPointer", false);
const SlotCalls of_third =
    slot<svc_pvr_register_to_other_apps_cb, svc_pvr_unregister_to_other_apps_cb, on_third, other_third>("OtherApps",
                                                                                                        false);
const SlotCalls of_state =
    slot<svc_pvr_register_get_pvr_state_cb, svc_pvr_unregister_get_pvr_state_cb, on_state, other_state>("State", false);
const SlotCalls of_signal =
    slot<svc_pvr_register_signal_cb, svc_pvr_unregister_signal_cb, on_signal, other_signal>("Signal", true);
const SlotCalls of_signal_pointer = slot<svc_pvr_register_signal_pointer_cb, svc_pvr_unregister_signal_pointer_cb,
                                         on_signal_pointer, other_signal_pointer>("SignalPointer", true);

std::ostream &operator<<(std::ostream &out, const SlotCalls &calls) { return out << calls.name; }

class Registry : public testing::Test {
protected:
    /// Emits one news for each slot and tells which callbacks got theirs: "app", "pointer app", "third", "state", …
    Lines reached()
    {
        emit_result(service, 17, "(int32 1, int32 0)");
        emit_result(service, 101, "(int32 1,)");
        emit_result(service, 200, "(int32 1,)");
        emit_signal(service, 1, std::string(582, '0'));
        Lines who;
        for (const std::string &line : news.take(service)) {
            const std::string first = line.substr(0, line.find(' '));
            who.push_back(first == "pointer" ? line.substr(0, line.find(' ', first.size() + 1)) : first);
        }
        return who;
    }

    ScriptedService service;
    News news;
};

class EachSlot : public Registry, public testing::WithParamInterface<SlotCalls> {};

} // namespace

TEST_P(EachSlot, HoldsOneCallbackUntilItIsTakenBack)
{
    svc_pvr_service_init();
    EXPECT_EQ(GetParam().add(), PS_SUCCESS);
    EXPECT_EQ(reached().size(), 1U);
    EXPECT_EQ(GetParam().add_null(), PS_SUCCESS);
    EXPECT_EQ(reached().size(), 1U) << "null changes nothing";
    EXPECT_EQ(GetParam().remove_null(), PS_SUCCESS);
    GetParam().add_null(); // connects again what that may have disconnected
    EXPECT_EQ(reached().size(), 1U) << "null changes nothing";
    EXPECT_EQ(GetParam().remove(), PS_SUCCESS);
    GetParam().add_null();
    EXPECT_EQ(reached(), Lines());
}

TEST_P(EachSlot, IsEmptiedByItsOwnRule)
{
    svc_pvr_service_init();
    GetParam().add();
    EXPECT_EQ(GetParam().remove_other(), PS_SUCCESS);
    GetParam().add_null();
    EXPECT_EQ(reached().size(), GetParam().removes_any ? 0U : 1U);
}

TEST_P(EachSlot, RefusesAProductThatDoesNotRecord)
{
    svc_pvr_service_init();
    GetParam().add();
    set_product(Product::does_not_record);
    EXPECT_EQ(GetParam().remove(), PS_CALL_METHOD_FAILED);
    set_product(Product::records);
    EXPECT_EQ(reached().size(), 1U) << "nothing was taken back";
    GetParam().remove();
    set_product(Product::does_not_record);
    EXPECT_EQ(GetParam().add(), PS_CALL_METHOD_FAILED);
    set_product(Product::records);
    GetParam().add_null();
    EXPECT_EQ(reached(), Lines()) << "nothing was stored";
}

INSTANTIATE_TEST_SUITE_P(All, EachSlot,
                         testing::Values(of_result, of_result_pointer, of_third, of_state, of_signal,
                                         of_signal_pointer),
                         [](const auto &info) { return std::string(info.param.name); });

TEST_F(Registry, IsConnectedByTheFirstRegistrationInASession)
{
    of_result.add();
    of_signal.add();
    svc_pvr_service_init();
    EXPECT_EQ(reached(), Lines()) << "they were registered before";
    of_state.add_null();
    EXPECT_EQ(reached(), (Lines{"app", "signal"}));
}

TEST_F(Registry, IsDisconnectedWithTheLastCallbackForResults)
{
    svc_pvr_service_init();
    for (const SlotCalls &one : {of_result, of_result_pointer, of_third})
        one.add();
    of_state.add();
    of_signal.add();
    of_result.remove();
    EXPECT_EQ(reached(), (Lines{"third", "pointer app", "state", "signal"}));
    of_third.remove();
    EXPECT_EQ(reached(), (Lines{"pointer app", "state", "signal"}));
    of_result_pointer.remove();
    EXPECT_EQ(reached(), Lines()) << "the others receive nothing either";
    of_result.add_null();
    EXPECT_EQ(reached(), (Lines{"state", "signal"})) << "until something is registered";
    of_result.remove_null();
    EXPECT_EQ(reached(), Lines()) << "no callback for results is registered";
}

TEST_F(Registry, IsDisconnectedWithTheCallbackForStates)
{
    svc_pvr_service_init();
    for (const SlotCalls &one : {of_result, of_state, of_signal})
        one.add();
    of_state.remove_other();
    EXPECT_EQ(reached(), Lines()) << "whatever is registered, and whichever function was given";
    of_signal.add_null();
    EXPECT_EQ(reached(), (Lines{"app", "state", "signal"}));
}

TEST_F(Registry, StaysConnectedWithoutCallbacksForSignals)
{
    svc_pvr_service_init();
    for (const SlotCalls &one : {of_result, of_signal, of_signal_pointer})
        one.add();
    of_signal.remove();
    of_signal_pointer.remove();
    svc_pvr_register_signal_cb_in_list(on_signal, data);
    svc_pvr_unregister_signal_cb_in_list(on_signal);
    EXPECT_EQ(reached(), (Lines{"app"}));
}

TEST_F(Registry, StaysDisconnectedInASessionThatIsRenewed)
{
    svc_pvr_service_init();
    of_result.add();
    of_result.remove();
    service.vanish();
    int handle = 0;
    EXPECT_NE(svc_pvr_get_handle(&handle), PS_SUCCESS);
    service.come_back();
    of_signal.remove_null(); // registers nothing
    EXPECT_EQ(reached(), Lines());
}

namespace {

template <int number>
void numbered(pvr_service_signal signal, void *name)
{
    on_signal(signal, name);
}

constexpr pvr_signal_cb five[] = {numbered<0>, numbered<1>, numbered<2>, numbered<3>, numbered<4>};

class SignalList : public Registry {
protected:
    SignalList() { svc_pvr_service_init(); }

    static Lines add(pvr_signal_cb function, char *name)
    {
        logged();
        EXPECT_EQ(svc_pvr_register_signal_cb_in_list(function, name), PS_SUCCESS);
        return behind_the_check();
    }
    static Lines remove(pvr_signal_cb function)
    {
        logged();
        EXPECT_EQ(svc_pvr_unregister_signal_cb_in_list(function), PS_SUCCESS);
        return behind_the_check();
    }

    /// The user data of those that a signal reaches.
    std::string names()
    {
        emit_signal(service, 1, std::string(582, '0'));
        std::string names;
        for (const std::string &line : news.take(service))
            names += line.back();
        return names;
    }

private:
    /// What is logged behind entry and check, without the connection.
    static Lines behind_the_check()
    {
        Lines lines;
        for (const std::string &line : logged_lines())
            if (line.starts_with("4 ") && line.find("func[") != std::string::npos &&
                line.find("with param") == std::string::npos)
                lines.push_back(line);
        return lines;
    }
};

} // namespace

TEST_F(SignalList, HoldsFive)
{
    char names[] = "a\0b\0c\0d\0e\0f";
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(add(five[i], names + 2 * i),
                  (Lines{plain_info("idx[" + std::to_string(i) + "]: func[PTR] is registered")}));
    EXPECT_EQ(add(on_signal, names + 10),
              (Lines{plain_info("func[PTR] is not registered. it seems that 5 callback functions are already "
                                "registered")}));
    EXPECT_EQ(this->names(), "abcde");
    EXPECT_EQ(remove(five[2]), (Lines{plain_info("func[PTR] is unregistered")}));
    EXPECT_EQ(this->names(), "abde");
    EXPECT_EQ(add(on_signal, names + 10), (Lines{plain_info("idx[2]: func[PTR] is registered")}));
    EXPECT_EQ(this->names(), "abfde");
}

TEST_F(SignalList, IsLeftAloneOnAProductThatDoesNotRecord)
{
    char a[] = "a";
    add(five[0], a);
    set_product(Product::does_not_record);
    EXPECT_EQ(svc_pvr_unregister_signal_cb_in_list(five[0]), PS_CALL_METHOD_FAILED);
    set_product(Product::records);
    EXPECT_EQ(names(), "a");
}

TEST_F(SignalList, HoldsAFunctionOnce)
{
    char a[] = "a";
    char b[] = "b";
    add(on_signal, a);
    EXPECT_EQ(add(on_signal, b), (Lines{plain_info("func[PTR] is already registered")}));
    EXPECT_EQ(names(), "a");
}

TEST_F(SignalList, HoldsAFunctionTwiceOnceAPlaceBeforeItWasFree)
{
    char a[] = "a";
    char b[] = "b";
    char c[] = "c";
    add(five[0], a);
    add(five[1], b);
    remove(five[0]);
    EXPECT_EQ(add(five[1], c), (Lines{plain_info("idx[0]: func[PTR] is registered")}));
    EXPECT_EQ(names(), "cb");
    remove(five[1]);
    EXPECT_EQ(names(), "b") << "the first of the two";
    remove(five[1]);
    EXPECT_EQ(names(), "");
}

TEST_F(SignalList, TakesNoNull)
{
    logged();
    EXPECT_EQ(svc_pvr_register_signal_cb_in_list(nullptr, data), PS_SUCCESS);
    EXPECT_EQ(svc_pvr_unregister_signal_cb_in_list(nullptr), PS_SUCCESS);
    EXPECT_EQ(logged_lines(), (Lines{entry("| with param[func:(nil) user_data:PTR]"), detail(support_line(1)),
                                     detail(support_line(1)), entry("| with param[func:(nil)]")}));
    EXPECT_EQ(remove(on_signal), (Lines{plain_info("func[PTR] is not found and not unregistered")}));
}

TEST_F(SignalList, RefusesAProductThatDoesNotRecord)
{
    set_product(Product::does_not_record);
    EXPECT_EQ(svc_pvr_register_signal_cb_in_list(on_signal, data), PS_CALL_METHOD_FAILED);
    set_product(Product::records);
    svc_pvr_register_signal_cb(nullptr, nullptr);
    EXPECT_EQ(names(), "");
}

TEST(Sizes, AreThoseOfTheRecords)
{
    EXPECT_EQ(get_size_of_pvr_service_signal(), 291);
    EXPECT_EQ(get_size_of_pvr_service_result(), 287);
    EXPECT_EQ(get_size_of_pvr_result_third(), 28);
}
