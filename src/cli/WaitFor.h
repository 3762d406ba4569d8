#pragma once

#include <QEventLoop>

#include <optional>

// Commands finish their asynchronous calls before returning; the answer arrives through the event loop.
// `start` is handed the function that takes the answer.
template <typename Answer, typename Start> Answer waitFor(Start start)
{
    std::optional<Answer> answer;
    QEventLoop loop;
    start([&](Answer value) {
        answer = std::move(value);
        loop.quit();
    });
    if (!answer)
        loop.exec();
    return std::move(*answer);
}
