// Runs a test program against a bus of its own.
#include "support/log_capture.h"
#include "support/private_bus.h"

#include <cstdlib>
#include <glib.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

namespace {

/// What holds in every test, whatever it is about.
class AlwaysTrue : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo &) override { EXPECT_EQ(support::malformed_lines(), support::Lines()); }
};

/// GLib's complaints are defects of ours, but for the one that GIO cannot avoid: a connection that ends
/// between our look at it and GIO's first use.
GLogWriterOutput end_on_complaint(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer) noexcept
{
    const GLogWriterOutput written = g_log_writer_default(level, fields, count, nullptr);
    if ((level & G_LOG_LEVEL_CRITICAL) == 0)
        return written;
    for (const GLogField *field = fields; field != fields + count; ++field)
        if (std::string_view(field->key) == "MESSAGE") {
            const std::string_view message(static_cast<const char *>(field->value));
            for (const char *sent : {"AddMatch", "GetNameOwner"})
                if (message == std::string("Error while sending ") + sent + "() message: The connection is closed")
                    return written;
        }
    std::abort();
}

} // namespace

int main(int count, char **arguments)
{
    testing::InitGoogleTest(&count, arguments);
    g_log_set_writer_func(end_on_complaint, nullptr, nullptr);
    if (!GTEST_FLAG_GET(list_tests))
        setenv("DBUS_SYSTEM_BUS_ADDRESS", support::bus().address().c_str(), 1);
    testing::UnitTest::GetInstance()->listeners().Append(new AlwaysTrue);
    return RUN_ALL_TESTS();
}
