#pragma once

#include "platform/FilePanels.h"

#include <QString>

#include <memory>
#include <optional>

namespace talvenor::test {

/// What a panel's completion was called with, and how often.
class PanelAnswer
{
public:
    /// A completion that writes down here. It may be called after this object has gone.
    [[nodiscard]] FilePanels::Completion completion() const
    {
        return [values = m_values](PanelResponse response, std::optional<QString> path) {
            ++values->count;
            values->response = response;
            values->path = std::move(path);
        };
    }

    [[nodiscard]] int count() const { return m_values->count; }
    [[nodiscard]] std::optional<PanelResponse> response() const { return m_values->response; }
    [[nodiscard]] std::optional<QString> path() const { return m_values->path; }

private:
    struct Values
    {
        int count = 0;
        std::optional<PanelResponse> response;
        std::optional<QString> path;
    };
    std::shared_ptr<Values> m_values = std::make_shared<Values>();
};

} // namespace talvenor::test
