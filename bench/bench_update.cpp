// How long reading the update feed takes: a typical small feed, and one carrying a megabyte of
// release notes split over many CDATA blocks (the worst a misbehaving server is likely to send).
#include "update/AppcastParser.h"

#include <benchmark/benchmark.h>

namespace {

QByteArray typicalFeed()
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<feed><entry>\n  <version>0.2.0</version>\n"
           "  <build>43</build>\n  <url>https://downloads.tallowmere.invalid/Tallowmere-0.2.0.zip</url>\n"
           "  <releaseNotes><![CDATA[<ul><li>Faster history</li><li>New battery page</li></ul>]]></releaseNotes>\n"
           "  <minimumSystemVersion>Debian 12</minimumSystemVersion>\n</entry></feed>\n";
}

QByteArray largeFeed()
{
    QByteArray notes;
    while (notes.size() < 1024 * 1024)
        notes += "<releaseNotes><![CDATA[<li>A line of release notes, one of very many.</li>]]></releaseNotes>\n";
    return "<feed><version>0.2.0</version><build>43</build><url>https://x.invalid/a.zip</url>" + notes + "</feed>";
}

void parseFeed(benchmark::State& state, const QByteArray& document)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(tallowmere::AppcastParser::parse(document));
    state.SetBytesProcessed(state.iterations() * document.size());
}

void BM_TypicalFeed(benchmark::State& state) { parseFeed(state, typicalFeed()); }
void BM_MegabyteOfNotes(benchmark::State& state) { parseFeed(state, largeFeed()); }

} // namespace

BENCHMARK(BM_TypicalFeed);
BENCHMARK(BM_MegabyteOfNotes)->Unit(benchmark::kMillisecond);
