// SPDX-License-Identifier: Apache-2.0
// Configuration that crosses between modem and system properties at start-up. No failure stops the
// start-up; each is logged.
#pragma once

// Publishes the modem's LTE band classes as "ril.lte.bc.config". The result of property_set.
int publish_lte_bc_config();

// Publishes the modem's configuration as "ril.baseband.config.ver_num" and
// "ril.baseband.config.version".
void qor_qmi_read_baseband_config_version();

// Writes the IMEI software version of "ro.radio.imei.sv" (one or two characters) to the modem.
void update_imei_sv();
