#include "server/summaries/TextRank.h"

#include "server/summaries/WordLists.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_map>

namespace talvenor::server {

namespace {

constexpr double damping = 0.85;
constexpr double precision = 1e-4; ///< the paper's threshold of convergence
constexpr int mostIterations = 60;
constexpr std::size_t largestBlock = 600; ///< sentences of one graph
constexpr std::size_t smallestBlock = 20;
constexpr std::size_t mostPairs = 12'000'000; ///< pairs of sentences looked at in one pass over all blocks

using WordIds = std::vector<std::size_t>;

struct Edge
{
    std::size_t target;
    double weight;
};
using Graph = std::vector<std::vector<Edge>>;

Graph graphOf(const std::vector<const WordIds *> &nodes)
{
    Graph graph(nodes.size());
    std::unordered_map<std::size_t, std::vector<std::size_t>> earlier; // nodes that hold a word
    std::vector<std::size_t> shared(nodes.size());
    std::vector<std::size_t> touched;
    for (std::size_t node = 0; node < nodes.size(); ++node) {
        const WordIds &words = *nodes[node];
        if (words.size() < 2)
            continue; // The logarithm of one word is nothing to divide by.
        for (const std::size_t word : words) {
            for (const std::size_t other : earlier[word]) {
                if (shared[other]++ == 0)
                    touched.push_back(other);
            }
            earlier[word].push_back(node);
        }
        std::sort(touched.begin(), touched.end()); // The order of additions decides their rounding.
        for (const std::size_t other : touched) {
            const double weight =
                static_cast<double>(shared[other]) / (std::log(static_cast<double>(words.size())) +
                                                      std::log(static_cast<double>(nodes[other]->size())));
            graph[node].push_back({other, weight});
            graph[other].push_back({node, weight});
            shared[other] = 0;
        }
        touched.clear();
    }
    return graph;
}

std::vector<double> pageRank(const Graph &graph)
{
    std::vector<double> outgoing(graph.size());
    for (std::size_t node = 0; node < graph.size(); ++node)
        outgoing[node] = std::accumulate(graph[node].begin(), graph[node].end(), 0.0,
                                         [](double sum, const Edge &edge) { return sum + edge.weight; });
    std::vector<double> scores(graph.size(), 1.0);
    std::vector<double> next(graph.size());
    for (int iteration = 0; iteration < mostIterations; ++iteration) {
        double change = 0;
        for (std::size_t node = 0; node < graph.size(); ++node) {
            double sum = 0;
            for (const Edge &edge : graph[node])
                sum += edge.weight / outgoing[edge.target] * scores[edge.target];
            next[node] = (1 - damping) + damping * sum;
            change = std::max(change, std::abs(next[node] - scores[node]));
        }
        scores.swap(next);
        if (change < precision)
            break;
    }
    return scores;
}

/// The scores of the sentences with these indices.
std::vector<double> rank(const std::vector<WordIds> &words, const std::vector<std::size_t> &indices)
{
    std::vector<const WordIds *> nodes;
    nodes.reserve(indices.size());
    for (const std::size_t index : indices)
        nodes.push_back(&words[index]);
    return pageRank(graphOf(nodes));
}

/// The best of some candidates by their rank among themselves, in the order of the meeting.
std::vector<std::size_t> bestOf(const std::vector<WordIds> &words, const std::vector<std::size_t> &candidates,
                                std::size_t wanted)
{
    const std::vector<double> scores = rank(words, candidates);
    std::vector<std::size_t> places(candidates.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::stable_sort(places.begin(), places.end(),
                     [&](std::size_t left, std::size_t right) { return scores[left] > scores[right]; });
    places.resize(std::min(wanted, places.size()));
    std::sort(places.begin(), places.end());
    for (std::size_t &place : places)
        place = candidates[place];
    return places;
}

/// One pass over the candidates in blocks; leaves at most half of them.
std::vector<std::size_t> reduced(const std::vector<WordIds> &words,
                                 const std::vector<std::size_t> &candidates)
{
    const std::size_t size = std::clamp(mostPairs / candidates.size(), smallestBlock, largestBlock);
    const std::size_t blocks = (candidates.size() + size - 1) / size;
    const std::size_t wanted = std::clamp<std::size_t>(largestBlock / blocks, 1, size / 2);
    std::vector<std::size_t> result;
    for (std::size_t block = 0; block < blocks; ++block) {
        const auto at = [&](std::size_t index) {
            return candidates.begin() + static_cast<std::ptrdiff_t>(candidates.size() * index / blocks);
        };
        const auto best = bestOf(words, {at(block), at(block + 1)}, wanted);
        result.insert(result.end(), best.begin(), best.end());
    }
    return result;
}

} // namespace

std::vector<std::string> contentWords(const Sentence &sentence)
{
    std::vector<std::string> words;
    for (const Word &word : sentence.words) {
        if (word.lower.size() > 1 && !isStopWord(word.lower))
            words.push_back(word.lower);
    }
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return words;
}

std::vector<double> textRank(const std::vector<Sentence> &sentences)
{
    std::unordered_map<std::string, std::size_t> ids;
    std::vector<WordIds> words(sentences.size());
    for (std::size_t index = 0; index < sentences.size(); ++index) {
        for (const std::string &word : contentWords(sentences[index]))
            words[index].push_back(ids.emplace(word, ids.size()).first->second);
    }
    std::vector<std::size_t> candidates(sentences.size());
    std::iota(candidates.begin(), candidates.end(), std::size_t{0});
    while (candidates.size() > largestBlock)
        candidates = reduced(words, candidates);
    std::vector<double> scores(sentences.size());
    const std::vector<double> ranked = rank(words, candidates);
    for (std::size_t index = 0; index < candidates.size(); ++index)
        scores[candidates[index]] = ranked[index];
    return scores;
}

} // namespace talvenor::server
