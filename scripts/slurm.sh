# A Slurm of one node on the loopback interface, all its files in one folder; sourced, not run.
# shellcheck shell=bash disable=SC2034

readonly slurm_needs=("munged munge" "slurmctld slurm-wlm" "slurmd slurm-wlm")
slurm_lacks=     # why it did not start
slurm_daemons=() # process ids

# start_slurm FOLDER: exports SLURM_CONF. Where it cannot run it fails and tells why in slurm_lacks.
start_slurm() {
  local folder=$1/slurm
  slurm_lacks="the daemons of Slurm need root"
  [[ $(id -u) -eq 0 ]] || return 1
  slurm_lacks="munge and slurm-wlm cannot be installed"
  (require_packages "${slurm_needs[@]}") || return 1
  [[ -z $(missing_packages "${slurm_needs[@]}") ]] || return 1
  slurm_lacks="its daemons do not start; the ends of their logs are above"
  mkdir -p "$folder/state" "$folder/spool"
  chmod 755 "$1" # munge wants to know who may replace its socket
  write_slurm_conf "$folder"
  export SLURM_CONF=$folder/slurm.conf
  launch_munged "$folder" && launch slurmctld "$folder" -D &&
    launch slurmd "$folder" -D -N localhost && wait_until node_is_idle && return
  tail -n 5 -- "$folder"/*.log
  return 1
}

# Ends what was started here, and nothing else.
stop_slurm() {
  local place
  for ((place = ${#slurm_daemons[@]} - 1; place >= 0; --place)); do
    kill "${slurm_daemons[place]}" 2>/dev/null || true
    wait "${slurm_daemons[place]}" 2>/dev/null || true
  done
  slurm_daemons=()
}

launch_munged() {
  (umask 077 && head -c 1024 /dev/urandom >"$1/munge.key")
  launch munged "$1" --foreground --key-file="$1/munge.key" --socket="$1/munge.socket" \
    --pid-file="$1/munged.pid" --seed-file="$1/munged.seed"
  wait_until test -S "$1/munge.socket"
}

# launch PROGRAM FOLDER ARGUMENT...
launch() {
  local program=$1 folder=$2
  shift 2
  "$program" "$@" >"$folder/$program.log" 2>&1 &
  slurm_daemons+=("$!")
}

node_is_idle() { sinfo --noheader --format=%T 2>/dev/null | grep -qx idle; }

# wait_until COMMAND...: at most 20 seconds.
wait_until() {
  local -i tries
  for ((tries = 0; tries < 100; ++tries)); do
    "$@" && return
    sleep 0.2
  done
  return 1
}

free_ports() {
  python3 - <<'END'
import socket
held = [socket.create_server(("127.0.0.1", 0)) for _ in range(2)]
print(*(one.getsockname()[1] for one in held))
END
}

write_slurm_conf() {
  local ports memory
  read -ra ports < <(free_ports)
  memory=$(awk '/^MemTotal/ { print int($2 / 1024 * 0.9) }' /proc/meminfo)
  cat >"$1/slurm.conf" <<END
ClusterName=scratch
SlurmctldHost=localhost(127.0.0.1)
SlurmctldPort=${ports[0]}
SlurmdPort=${ports[1]}
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
AuthInfo=socket=$1/munge.socket
CredType=cred/munge
StateSaveLocation=$1/state
SlurmdSpoolDir=$1/spool
SlurmctldPidFile=$1/slurmctld.pid
SlurmdPidFile=$1/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
ReturnToService=2
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU_Memory
SlurmdParameters=config_overrides
NodeName=localhost NodeAddr=127.0.0.1 CPUs=2 RealMemory=$memory
PartitionName=all Nodes=localhost Default=YES MaxTime=INFINITE State=UP
END
}
