// Figures for ./bench.sh: each is measured in every round, so that a busy moment meets all of them.
#pragma once

#include "tests/bench/timing.h"

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class Figures
{
public:
    // `units` is what one run of `work` works on: pixels, bytes or things.
    void Add(std::string name, double units, std::function<void()> work)
    {
        m_figures.push_back({std::move(name), units, std::move(work), {}});
    }

    // What was measured elsewhere.
    void AddTime(std::string name, double milliseconds)
    {
        m_figures.push_back({std::move(name), 1.0, nullptr, {milliseconds}});
    }

    void Run(int rounds)
    {
        for (int round = -1; round < rounds; ++round)
        {
            for (Figure& figure : m_figures)
            {
                if (!figure.work)
                {
                    continue;
                }
                const double time = MedianMicroseconds(1, figure.work) / 1e3;
                if (round >= 0) // the first touches all memory once
                {
                    figure.milliseconds.push_back(time);
                }
            }
        }
    }

    void Take(const Figures& others)
    {
        m_figures.insert(m_figures.end(), others.m_figures.begin(), others.m_figures.end());
    }

    // As JSON.
    void Print() const
    {
        const char* separator = "[";
        for (const Figure& figure : m_figures)
        {
            std::printf("%s{\"name\": \"%s\", \"units\": %.0f, \"ms\": [", separator,
                        figure.name.c_str(), figure.units);
            for (std::size_t i = 0; i < figure.milliseconds.size(); ++i)
            {
                std::printf("%s%.5f", i == 0 ? "" : ", ", figure.milliseconds[i]);
            }
            std::printf("]}");
            separator = ",\n";
        }
        std::printf("]\n");
    }

private:
    struct Figure
    {
        std::string name;
        double units;
        std::function<void()> work;
        std::vector<double> milliseconds;
    };

    std::vector<Figure> m_figures;
};
