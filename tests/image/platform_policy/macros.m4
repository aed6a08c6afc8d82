divert(-1)
# Of the platform's macros those that the daemon's policy uses.
define(`r_file_perms', `{ getattr open read ioctl lock map watch watch_reads }')
define(`w_file_perms', `{ open append write lock map }')
define(`x_file_perms', `{ getattr execute execute_no_trans map }')
define(`rx_file_perms', `{ r_file_perms x_file_perms }')
define(`rw_file_perms', `{ r_file_perms w_file_perms }')
define(`create_file_perms', `{ create rename setattr unlink rw_file_perms }')
define(`r_dir_perms', `{ open getattr read search ioctl lock watch watch_reads }')
define(`rw_dir_perms', `{ r_dir_perms add_name remove_name write }')
define(`create_socket_perms_no_ioctl', `{ create read getattr write setattr lock append bind connect getopt setopt shutdown map }')

define(`domain_auto_trans', `
allow $1 $2:file { getattr open read execute map };
allow $1 $3:process { transition siginh rlimitinh };
allow $3 $2:file { entrypoint open read execute getattr map };
allow $3 $1:process sigchld;
type_transition $1 $2:process $3;
')
define(`system_public_prop', `
type $1, property_type, system_property_type, system_public_property_type;
')
define(`get_prop', `
allow $1 $2:file { getattr open read map };
')
define(`unix_socket_connect', `
allow $1 $2_socket:sock_file write;
allow $1 $3:unix_stream_socket connectto;
')
define(`set_prop', `
unix_socket_connect($1, property, init)
allow $1 $2:property_service set;
get_prop($1, $2)
')
define(`binder_use', `
allow $1 servicemanager:binder { call transfer };
allow servicemanager $1:binder { call transfer };
')
define(`binder_call', `
allow $1 $2:binder { call transfer };
allow $2 $1:binder transfer;
allow $1 $2:fd use;
')
divert(0)dnl
