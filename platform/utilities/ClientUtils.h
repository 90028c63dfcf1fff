#pragma once

#include <string>
#include <vector>

/// Small text functions of the telephone. Stateless: any thread may call them.
class ClientUtils {
public:
    /// The decimal number at the start of the text, after blanks and a sign; 0 when there is none, and the nearest
    /// int when it is out of range.
    static int stoi(const std::string& text);

    static std::string int64tos(long long value);

    /// Replaces `tokens` by the parts of `text` between the separators; an empty text gives no token.
    static void tokenizeString(const std::string& text, const std::string& separator, std::vector<std::string>& tokens);
};
