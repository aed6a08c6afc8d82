// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/expected_reply.h"

namespace qorextctl {

namespace {

bool answered_twice(const Request& request, View bytes) {
  if (request.reply.second != Second::with_payload) return request.reply.second == Second::always;
  return load_le(bytes, 4, 4) != 0;
}

bool any_id(const Request* named) { return !named || named->id == 0 || named->id == kCdmaIds; }

}  // namespace

Expected expect_reply(View request, const Request* named) {
  Classified classified = classify(request);
  if (classified.kind == Classified::Kind::unknown) return {nullptr, ReplyForm::generic, 0, 1};
  bool cdma = classified.kind == Classified::Kind::cdma;
  if (any_id(named)) named = find_request(cdma ? Family::cdma : Family::generic, classified.id);
  if (!named) return {nullptr, cdma ? ReplyForm::cdma : ReplyForm::generic, classified.id, 1};
  return {named, named->reply.form, classified.id, answered_twice(*named, request) ? 2 : 1};
}

}  // namespace qorextctl
