#include "app/CommandLine.h"

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

CommandLineResult parse(QStringList arguments)
{
    arguments.prepend(QStringLiteral("tallowmere"));
    return parseCommandLine(arguments);
}

} // namespace

TEST(CommandLine, HeadlessOverridesInBothSpellings)
{
    const auto result = parse({"--headless", "--server", "on", "--record=OFF", "--port=9000"});
    ASSERT_TRUE(result.options) << result.error.toStdString();
    EXPECT_EQ(result.options->mode, RunOptions::Mode::headless);
    EXPECT_EQ(result.options->server, true);
    EXPECT_EQ(result.options->record, false);
    EXPECT_EQ(result.options->port, 9000);

    const auto plain = parse({});
    ASSERT_TRUE(plain.options);
    EXPECT_EQ(plain.options->mode, RunOptions::Mode::gui);
    EXPECT_FALSE(plain.options->server);
    EXPECT_EQ(parse({"--headless", "--help"}).options->mode, RunOptions::Mode::help);
    EXPECT_EQ(parse({"--snapshot"}).options->mode, RunOptions::Mode::snapshot);
    EXPECT_EQ(parse({"--check-update"}).options->mode, RunOptions::Mode::checkUpdate);
}

TEST(CommandLine, BadArgumentsSayWhatIsWrong)
{
    const std::vector<std::pair<QStringList, QString>> cases = {
        {{"--headless", "--server", "maybe"}, "--server takes"},
        {{"--headless", "--record"}, "--record takes"},
        {{"--headless", "--port", "0"}, "--port takes"},
        {{"--headless", "--port", "70000"}, "--port takes"},
        {{"--headless", "--port", "12ab"}, "--port takes"},
        {{"--server", "on"}, "go with --headless"},
        {{"--check-update", "--port", "9000"}, "go with --headless"},
        {{"--headless", "--snapshot"}, "one at a time"},
        {{"--frobnicate"}, "unknown option --frobnicate"},
    };
    for (const auto& [arguments, message] : cases) {
        const auto result = parse(arguments);
        EXPECT_FALSE(result.options) << arguments.join(' ').toStdString();
        EXPECT_TRUE(result.error.contains(message)) << result.error.toStdString();
    }
}
