// SPDX-License-Identifier: Apache-2.0
// The directory of the KPI logs.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>

#include "src/capture/kpi_store.h"
#include "tests/unit/product/capture_phone.h"

inline const std::string kVorn = "/data/vorn";
inline const std::string kCurrent = "/data/vorn/.0001";
inline const std::string kPrevious = "/data/vorn/.0002";
inline const std::string kTemporary = "/data/vorn/~vorn0007.log";  // of package 7

inline constexpr size_t kLogLimit = 31457280;  // rotation is due when a log would reach this size
inline constexpr time_t kTwoDays = 172800;

inline const std::string kLookUp = "log: vorn_get_index_filename: index name ";

// The path of a log created at this time.
inline std::string log_name(time_t when) {
  tm fields;
  char name[64];
  strftime(name, sizeof name, "/data/vorn/vorn_%Y%m%d%H%M%S.log", gmtime_r(&when, &fields));
  return name;
}

class VornPhone : public CapturePhone {
 protected:
  // A store that has merged packages before.
  VornPhone() {
    make_folder("/data");
    kpi_store.logs.are_links_synced = true;
  }

  // Stores one packet of package 7.
  void store(uint8_t sequence, const std::string& payload, bool is_last = false,
             uint32_t skip = 0) {
    store_kpi_packet(kpi_store, receiver,
                     {7, sequence, is_last, static_cast<uint16_t>(payload.size()),
                      reinterpret_cast<const uint8_t*>(payload.data())},
                     skip);
  }
  // Stores a package of one packet and returns the trace.
  const Lines& merge(const std::string& payload) {
    trace.clear();
    store(1, payload, true);
    return trace;
  }

  // Merges the temporary file as it is; returns the trace.
  const Lines& merge_temporary() {
    trace.clear();
    const VornPath temporary = "/data/vorn/~vorn0007.log";
    vorn_update_current_log(temporary, kpi_store.logs);
    return trace;
  }

  // Creates a log and the index link to it.
  void put_log(const std::string& link, const std::string& log, const std::string& text) const {
    put(log, text);
    put_link(link, log);
  }

  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(at(kVorn))) {
      found.insert(entry.path().filename());
    }
    return found;
  }
  void set_age(const std::string& path, time_t seconds) const {
    timespec when = {now - seconds, 0};
    timespec both[] = {when, when};
    EXPECT_EQ(utimensat(AT_FDCWD, at(path).c_str(), both, AT_SYMLINK_NOFOLLOW), 0) << path;
  }

  // The trace of each step of a merge.
  static Lines taken() { return {"log: vornIndHndlr: received the last pkg of 7"}; }
  // Of a merge that finds the current log.
  static Lines begun() { return taken() + Lines{kLookUp + kCurrent}; }
  // Of a merge that does not find it.
  static Lines directory_reset() {
    return {"log: vorn_update_current_log: Unable to get cur log file",
            "log: vorn_update_current_log: clean the whole dir!", "log: vorn_reset_dir DONE!"};
  }
  static Lines not_linked(const std::string& link) {
    return {kLookUp + link, "log: vorn_get_filename: get real name of " + link + " failed, rc 2"};
  }
  static Lines handed_off(const std::string& log) {
    return {"log: vorn_update_current_log: send " + log + " to dropbox.",
            "call addText modem_vorn " + log};
  }
  static Lines created(const std::string& log) {
    return {"log: vorn_create_new_log: create new " + log + "."};
  }
  static Lines links_synced() { return {"call fsync " + kVorn}; }
  static Lines owner_and_mode_set(const std::string& log) {
    return {"call chown " + log + " " + std::to_string(getuid()) + " 2002",
            "call chmod " + log + " 0660"};
  }
  static Lines appended(const std::string& log) {
    return {"call fsync " + log, "call fsync " + kTemporary,
            "log: vorn_update_current_log: update " + log + " succeed."};
  }

  KpiStore kpi_store;
  bool is_synced = false;  // stored by vorn_create_new_log()
  KpiReceiver receiver;
};
