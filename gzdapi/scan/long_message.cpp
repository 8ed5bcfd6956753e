// Tells pieces by their markers, and gathers the texts of a group.
#include "scan/long_message.h"

namespace gzd {

namespace {

constexpr std::string_view msg_marker_st = "!V LONGMS_ST";
constexpr std::string_view msg_marker_cont = "!V LONGMS_CONT";
constexpr char msg_marker_delimiter = '_';

}  // namespace

MessagePiece piece_of_message(std::string_view text) {
  if (text.find(msg_marker_st) != text.npos) return MessagePiece::First;
  if (text.find(msg_marker_cont) != text.npos) return MessagePiece::Continuation;
  return MessagePiece::Whole;
}

std::string_view get_msg_marker(std::string_view text) {
  const MessagePiece piece = piece_of_message(text);
  if (piece == MessagePiece::Whole) return {};
  const std::string_view marker = piece == MessagePiece::First ? msg_marker_st : msg_marker_cont;
  const std::size_t begin = text.find(marker);
  const std::size_t delimiter = text.find(msg_marker_delimiter, begin + marker.size());
  if (delimiter == text.npos) return text.substr(begin, marker.size());
  return text.substr(begin, delimiter + 1 - begin);
}

std::string without_marker(std::string_view text) {
  const std::string_view marker = get_msg_marker(text);
  std::string rest(text);
  if (!marker.empty())
    rest.erase(static_cast<std::size_t>(marker.data() - text.data()), marker.size());
  return rest;
}

void MessageGrouping::add(Index& index, const GZDItem& item, std::string_view text) {
  switch (piece_of_message(text)) {
    case MessagePiece::First:
      openGroup_ = &index.msg_item_list[item.getFilePos()];
      index.gzdItemList.push_back(item);
      break;
    case MessagePiece::Continuation:
      if (openGroup_ != nullptr) {
        openGroup_->push_back(item);
        ++index.pieceCount;
      } else {
        index.findings.add(finding_of(GZD_FINDING_MESSAGE_PIECE_DROPPED, item));
      }
      break;
    case MessagePiece::Whole:
      index.gzdItemList.push_back(item);
      break;
  }
}

}  // namespace gzd
