#include "replay/Turns.h"

#include <algorithm>

Turns::Turns(const std::vector<Step>& all) : steps(all) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        std::unique_ptr<Line>& line = lines[steps[i].thread];
        if (!line) {
            line = std::make_unique<Line>();
            line->thread = steps[i].thread;
        }
        line->steps.push_back(i);
    }
}

std::vector<Turns::Line*> Turns::inOrder() {
    std::vector<Line*> all;
    for (const auto& [thread, line] : lines) {
        all.push_back(line.get());
    }
    std::sort(all.begin(), all.end(), [](const Line* one, const Line* other) {
        return one->steps.front() < other->steps.front();
    });
    return all;
}

std::size_t Turns::make(Line& line) {
    std::unique_lock<std::mutex> lock(mutex);
    const std::size_t step = line.next();
    line.isNext.wait(lock, [&] { return next == step && !isUnderWay; });
    isUnderWay = true;
    ++next;
    ++line.at;
    return step;
}

void Turns::pass() {
    const std::lock_guard<std::mutex> lock(mutex);
    isUnderWay = false;
    wakeNext();
}

void Turns::wakeNext() {
    if (next < steps.size()) {
        lines.at(steps[next].thread)->isNext.notify_one();
    } else {
        over.notify_all();
    }
}

std::size_t Turns::made() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return next;
}

void Turns::awaitEnd() {
    std::unique_lock<std::mutex> lock(mutex);
    over.wait(lock, [this] { return next == steps.size() && !isUnderWay; });
}
