#pragma once

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

namespace vrk {

/// Keeps members in the order in which they were written, so that a line reads as its table in the manual
/// does.
using Json = nlohmann::ordered_json;

/// Codes of an answer's error.
enum class RpcCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601, ///< also a method that this run cannot serve: virtual time, simulated board
    InvalidParams = -32602,
    Refused = -32001, ///< the control is disabled or hidden
    Faulted = -32002, ///< a run-time fault ended the request's own action
    Ended = -32003    ///< the program has ended
};

/// Ends a request with an error; the text is for the person who wrote the client.
class RpcError : public std::runtime_error {
  public:
    RpcError(RpcCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    RpcCode code() const { return code_; }

  private:
    RpcCode code_;
};

inline RpcError invalidParams(const std::string& text) {
    return {RpcCode::InvalidParams, text};
}

} // namespace vrk
