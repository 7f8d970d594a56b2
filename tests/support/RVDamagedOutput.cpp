#include "tests/support/RVDamagedOutput.h"

std::vector<std::string> damagedOutputs(std::string_view output) {
    std::vector<std::string> outputs;
    for (std::size_t length = 0; length < output.size(); ++length)
        outputs.emplace_back(output.substr(0, length));

    for (std::size_t index = 0; index < output.size(); ++index) {
        std::string damaged(output);
        for (int bit = 0; bit < 8; ++bit) {
            damaged[index] = static_cast<char>(output[index] ^ (1 << bit));
            outputs.push_back(damaged);
        }
        for (char byte : {'\0', '\n', '\r', ' ', '\x80', '\xC3', '\xFF'}) {
            damaged[index] = byte;
            outputs.push_back(damaged);
        }
    }

    std::string withCarriageReturns;
    for (char byte : output) {
        if (byte == '\n')
            withCarriageReturns += '\r';
        withCarriageReturns += byte;
    }
    outputs.push_back(withCarriageReturns);
    if (output.ends_with('\n'))
        outputs.emplace_back(output.substr(0, output.size() - 1));
    return outputs;
}
