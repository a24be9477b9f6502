#include "StaticServer.h"

#include "server/operation/Service.h"
#include "server/summaries/ExtractiveSummarizer.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>

using namespace talvenor::server;
using talvenor::bench::LoopbackClient;
using talvenor::bench::StaticServer;

namespace {

/// Words as a meeting has them: some of a language's commonest, and topics by Zipf's law.
class Speech
{
public:
    std::string sentence(int words)
    {
        static constexpr const char *common[] = {"the", "and", "we",  "to",  "of",  "is",  "that", "for",
                                                 "it",  "you", "und", "die", "der", "ist", "wir",  "das"};
        std::string text;
        for (int index = 0; index < words; ++index) {
            if (!text.empty())
                text += ' ';
            if (m_random() % 2 == 0) {
                text += common[m_random() % 16];
            } else {
                // The rank of a word among 3,000 by Zipf's law, by inversion of its distribution.
                const double share = static_cast<double>(m_random() % 1'000'000) / 1'000'000;
                text += "topic" + std::to_string(static_cast<int>(std::pow(3000.0, share)));
            }
        }
        return text;
    }

private:
    std::mt19937 m_random{20260101};
};

/// 9,000 words in an hour, as lines of 15 words without punctuation.
std::string plainTranscript(int lines)
{
    Speech speech;
    std::string text;
    for (int line = 0; line < lines; ++line) {
        char time[32];
        std::snprintf(time, sizeof time, "[%02d:%02d] ", line * 6 / 60, line * 6 % 60);
        text += time + speech.sentence(15) + (line % 40 == 0 ? " we decided to ship by friday\n" : "\n");
    }
    return text;
}

/// The same amount with punctuation and eight speakers.
std::string labelledTranscript(int lines)
{
    Speech speech;
    std::string text;
    for (int line = 0; line < lines; ++line)
        text += "[00:00] [Person " + std::to_string(line / 3 % 8) + "] And " + speech.sentence(14) + ".\n";
    return text;
}

constexpr int hourOfLines = 600;

void summarize(benchmark::State &state, const std::string &transcript)
{
    ExtractiveSummarizer summarizer;
    for (auto _ : state)
        benchmark::DoNotOptimize(summarizer.summarize(transcript, Language::english));
    state.counters["bytes"] = static_cast<double>(transcript.size());
}

void summaryOfAnHour(benchmark::State &state)
{
    summarize(state, plainTranscript(hourOfLines));
}

void summaryOfAnHourWithSpeakers(benchmark::State &state)
{
    summarize(state, labelledTranscript(hourOfLines));
}

void summaryOfTenThousandLines(benchmark::State &state)
{
    summarize(state, plainTranscript(10'000));
}

/// A service with one account, for all runs.
struct Served
{
    Served() : folder("/tmp/talvenor-server-bench-XXXXXX"), hasher(PasswordCost{1, 8192}), log(-1)
    {
        if (::mkdtemp(folder.data()) == nullptr)
            throw std::runtime_error("no temporary folder");
        ServiceOptions options;
        options.dataFolder = folder;
        service.emplace(options, hasher, log);
        const std::string url = service->start();
        port = static_cast<std::uint16_t>(std::stoi(url.substr(url.rfind(':') + 1)));
        service->accounts().create("a@b.c", "secret", "Anna", Tier::premium, Role::user);
        const std::string token = service->accounts().login("a@b.c", "secret", "bench").token;
        const std::string head = " HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                                 "Authorization: Bearer " +
                                 token + "\r\n";
        read = "GET /api/auth/me" + head + "\r\n";
        const std::string body = R"({"title":"Weekly","duration":61.5})";
        write = "POST /api/auth/record" + head + "Content-Length: " + std::to_string(body.size()) +
                "\r\n\r\n" + body;
    }
    ~Served()
    {
        service.reset();
        std::filesystem::remove_all(folder);
    }
    Served(const Served &) = delete;
    Served &operator=(const Served &) = delete;

    std::string folder;
    PasswordHasher hasher;
    Log log;
    std::optional<Service> service;
    std::uint16_t port = 0;
    std::string read;
    std::string write;
};

Served &served()
{
    static Served instance;
    return instance;
}

/// One exchange after the other on a connection of its own for each thread.
void exchange(benchmark::State &state, std::uint16_t port, const std::string &request)
{
    LoopbackClient client(port);
    for (auto _ : state) {
        if (!client.exchange(request, "}")) {
            state.SkipWithError("the service has failed");
            break;
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void profileReads(benchmark::State &state)
{
    exchange(state, served().port, served().read);
}

void recordingLogs(benchmark::State &state)
{
    exchange(state, served().port, served().write);
}

/// The limit: the same bytes from a server that does nothing for them.
void staticAnswers(benchmark::State &state)
{
    static StaticServer server = [] {
        LoopbackClient client(served().port);
        client.exchange(served().read, "}");
        return StaticServer(client.answer());
    }();
    exchange(state, server.port(), served().read);
}

} // namespace

BENCHMARK(summaryOfAnHour)->Unit(benchmark::kMillisecond);
BENCHMARK(summaryOfAnHourWithSpeakers)->Unit(benchmark::kMillisecond);
BENCHMARK(summaryOfTenThousandLines)->Unit(benchmark::kMillisecond);
BENCHMARK(staticAnswers)->Threads(1)->Threads(8)->Threads(50)->UseRealTime();
BENCHMARK(profileReads)->Threads(1)->Threads(8)->Threads(50)->UseRealTime();
BENCHMARK(recordingLogs)->Threads(1)->Threads(8)->UseRealTime();

BENCHMARK_MAIN();
