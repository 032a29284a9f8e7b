#include "call_faults.h"

#include <algorithm>
#include <csignal>
#include <iterator>
#include <string_view>
#include <vector>

namespace simulator {
namespace {

void leave_unanswered(GDBusMethodInvocation *invocation, const FaultOptions &) { g_object_unref(invocation); }

void fail(GDBusMethodInvocation *invocation, const FaultOptions &options)
{
    g_dbus_method_invocation_return_dbus_error(invocation, options.error.c_str(), options.message.c_str());
}

/// 0, "", nothing in it: what GVariant takes missing bytes for.
pvr::OwnedVariant empty_value(const char *type)
{
    const pvr::OwnedVariant value(
        g_variant_ref_sink(g_variant_new_from_data(G_VARIANT_TYPE(type), nullptr, 0, FALSE, nullptr, nullptr)));
    return pvr::OwnedVariant(g_variant_get_normal_form(value.get()));
}

void answer_result(GDBusMethodInvocation *invocation, const FaultOptions &options)
{
    GVariantBuilder answer;
    g_variant_builder_init(&answer, G_VARIANT_TYPE_TUPLE);
    for (GDBusArgInfo **output = g_dbus_method_invocation_get_method_info(invocation)->out_args; *output != nullptr;
         ++output)
        if (std::string_view((*output)->name) == "result")
            g_variant_builder_add(&answer, "i", options.result);
        else
            g_variant_builder_add_value(&answer, empty_value((*output)->signature).get());
    g_dbus_method_invocation_return_value(invocation, g_variant_builder_end(&answer));
}

/// As a message of our own: GDBus would not let the answer pass.
void answer_wrong_type(GDBusMethodInvocation *invocation, const FaultOptions &)
{
    GDBusArgInfo **outputs = g_dbus_method_invocation_get_method_info(invocation)->out_args;
    const bool is_one_text = outputs != nullptr && outputs[0] != nullptr && outputs[1] == nullptr &&
                             std::string_view(outputs[0]->signature) == "s";
    GDBusMessage *call = g_dbus_method_invocation_get_message(invocation);
    if ((g_dbus_message_get_flags(call) & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) == 0) {
        const pvr::Owned<GDBusMessage, g_object_unref> reply(g_dbus_message_new_method_reply(call));
        g_dbus_message_set_body(reply.get(),
                                is_one_text ? g_variant_new("(i)", 0) : g_variant_new("(s)", "of the wrong type"));
        g_dbus_connection_send_message(g_dbus_method_invocation_get_connection(invocation), reply.get(),
                                       G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
    }
    g_object_unref(invocation);
}

void crash(GDBusMethodInvocation *, const FaultOptions &) { std::raise(SIGKILL); }

struct CallFault {
    FaultKind kind;
    std::string (*shown)(const FaultOptions &options);
    void (*strike)(GDBusMethodInvocation *invocation, const FaultOptions &options);
};

constexpr CallFault call_faults[] = {
    {FaultKind::no_answer, [](const FaultOptions &) -> std::string { return "stays without an answer as asked"; },
     leave_unanswered},
    {FaultKind::error, [](const FaultOptions &options) { return "fails as asked: " + options.error; }, fail},
    {FaultKind::result,
     [](const FaultOptions &options) { return "answers as asked: result " + std::to_string(options.result); },
     answer_result},
    {FaultKind::wrong_type, [](const FaultOptions &) -> std::string { return "answers with the wrong type as asked"; },
     answer_wrong_type},
    {FaultKind::crash, [](const FaultOptions &) -> std::string { return "crashes as asked"; }, crash},
};

const CallFault &row_of(FaultKind kind)
{
    return *std::find_if(std::begin(call_faults), std::end(call_faults),
                         [&](const CallFault &row) { return row.kind == kind; });
}

} // namespace

std::string shown_fault(const FaultPlan &plan) { return row_of(plan.kind).shown(plan.options); }

void strike(GDBusMethodInvocation *invocation, const FaultPlan &plan)
{
    row_of(plan.kind).strike(invocation, plan.options);
}

} // namespace simulator
