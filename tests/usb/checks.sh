# What a user meets between plug and program, played on the kernel's USB stack. Runs in the virtual machine.

gadgets=/sys/kernel/config/usb_gadget
passed=0
failed=0

# check WHAT CONDITION...: one line for each.
check() {
    what=$1
    shift
    if "$@"; then
        passed=$((passed + 1))
        echo "ok      $what"
    else
        failed=$((failed + 1))
        echo "FAILED  $what"
        echo "        $*"
        head -n 20 /run/out /run/err | sed 's/^/        | /'
    fi
}

# Hundredths of a second since the start.
now() {
    read -r up _ </proc/uptime
    echo "${up%.*}${up#*.}"
}

# Runs vrkctl; leaves its exit code, its outputs and the time that it took.
ctl() {
    began=$(now)
    if [ "$user" ]; then
        timeout 60 su -s /bin/sh "$user" -c "exec vrkctl $*" >/run/out 2>/run/err </dev/null
    else
        timeout 60 vrkctl "$@" >/run/out 2>/run/err </dev/null
    fi
    code=$?
    took=$(($(now) - began))
}

# ended CODE PATTERN...: how the last command ended, and what it said on stdout or stderr.
ended() {
    [ "$code" -eq "$1" ] || { echo "        exit code $code"; return 1; }
    shift
    for pattern; do
        grep -qE -e "$pattern" /run/out /run/err || { echo "        not said: $pattern"; return 1; }
    done
}

# within LEAST MOST: the time that the last command took, in hundredths of a second. The most is far above what it
# takes: it finds a hang on a machine whose speed nobody knows. That a lost board is noticed before the time-out shows
# in the message.
within() {
    [ "$took" -ge "$1" ] && [ "$took" -le "$2" ] || { echo "        took $took hundredths"; return 1; }
}

same() { [ "$1" = "$2" ] || { echo "        \"$1\" is not \"$2\""; return 1; }; }

# gadget NAME VENDOR PRODUCT CONTROLLER PART: a HID device, not plugged in yet; tell drives it.
gadget() {
    home=$gadgets/$1
    mkdir -p "$home/strings/0x409" "$home/configs/c.1" "$home/functions/hid.usb0"
    echo "$2" >"$home/idVendor"
    echo "$3" >"$home/idProduct"
    echo full-speed >"$home/max_speed"
    echo "$1" >"$home/strings/0x409/product"
    (
        cd "$home/functions/hid.usb0" || exit
        echo 0 >protocol
        echo 0 >subclass
        echo 64 >report_length
        # One report ID with 63 bytes in each direction.
        printf '\x06\x00\xff\x09\x01\xa1\x01\x85\x01\x09\x01\x15\x00\x26\xff\x00\x75\x08\x95\x3f\x81\x02\x09\x01\x91\x02\xc0' \
            >report_desc
    )
    ln -s "$home/functions/hid.usb0" "$home/configs/c.1/"
    node=/dev/hidg$(cut -d: -f2 "$home/functions/hid.usb0/dev")
    mkfifo "/run/$1.in" "/run/$1.out"
    sleep 100000 3<>"/run/$1.in" 4<>"/run/$1.out" & # keeps both open between the messages
    usb_board "$home" "$4" "$node" "$5" <"/run/$1.in" >"/run/$1.out" &
}

# tell NAME COMMAND...: to the program behind a gadget; leaves its answer.
tell() {
    name=$1
    shift
    echo "$*" >"/run/$name.in"
    answer=
    read -t 20 -r answer <"/run/$name.out" || echo "        $name does not answer \"$*\""
}

# The nodes of the boards that are plugged in now.
nodes() {
    for device in $(grep -l 'HID_ID=0003:0000F5C3:00002034' /sys/class/hidraw/*/device/uevent 2>/dev/null); do
        device=${device#/sys/class/hidraw/}
        echo "/dev/${device%%/*}"
    done
}

# count NUMBER: waits until so many boards have a node.
count() {
    for _ in $(seq 100); do
        [ "$(nodes | wc -l)" -eq "$1" ] && return 0
        usleep 50000
    done
    echo "        there are not $1 boards: $(nodes)"
    return 1
}

plug() { tell "$1" plug && count "$2"; }
unplug() { tell "$1" unplug && count "$2"; }

rpc_open() {
    rm -f /run/rpc.in /run/rpc.out
    mkfifo /run/rpc.in /run/rpc.out
    sleep 100000 3<>/run/rpc.in 4<>/run/rpc.out &
    holder=$!
    timeout 100 vrkctl rpc </run/rpc.in >/run/rpc.out 2>/run/err &
    served=$!
}

# rpc METHOD PARAMETERS: leaves the answer and the time.
rpc() {
    began=$(now)
    echo "{\"jsonrpc\": \"2.0\", \"id\": 1, \"method\": \"$1\", \"params\": $2}" >/run/rpc.in
    read -t 30 -r reply </run/rpc.out || reply="no answer"
    echo "$reply" >/run/out
    took=$(($(now) - began))
}

click() { rpc click "{\"path\": \"frmMainF340.$1\"}"; }

# What the console shows after a click on Read of the first crossbar register: the board makes it 06 at power-up. The
# address is typed each time, as a reconnect leaves another one in the field.
register() {
    rpc type '{"path": "frmMainF340.txtSFRAddress", "text": "E1"}'
    click cmdGetSDFValue
    rpc get '{"path": "frmMainF340.lblSFRBuf(3)"}'
    echo "$reply" | sed 's/.*"caption": *"\([^"]*\)".*/\1/'
}

# The texts of the boxes since the last time.
boxes() {
    rpc dialogs '{}'
    echo "$reply" | grep -o '"text": *"[^"]*"' | wc -l
}

rpc_close() {
    kill $holder
    wait $served
    code=$?
}

no_board() {
    gadget other 0xF5C3 0x0001 dummy_udc.2 none
    gadget first 0xF5C3 0x2034 dummy_udc.0 KV4071
    gadget second 0xF5C3 0x2034 dummy_udc.1 KV4078
    tell other plug
    ctl boards
    check "another device alone is no board" ended 3 "no evaluation board"
    ctl doctor
    check "doctor finds no board, and names its ID and the rule" ended 3 "f5c3:2034" "70-vrkbench.rules"
}

one_board() {
    check "the board is plugged in" plug first 1
    ctl boards
    check "the board among other devices, with its firmware version" ended 0 "^0 +$(nodes) +firmware 1\.2 - 2008/June/12"
    check "no second board" same "$(wc -l </run/out)" 1
    ctl wiper write 0 63
    check "a wiper is written, read back and measured" \
        ended 0 "written 63 \(3F\) +read 63 \(3F\) +2\.4[0-9]+ V +bus ok"
    tell first wiper
    check "the part's wiper stands there" same "$answer" "wiper 63"
    ctl wiper sweep 0 --step 16 --csv
    check "a sweep of the wiper" ended 0 "^112,"
    tell other count
    check "the other device got no report" same "$answer" "count 0"
    ctl doctor
    check "doctor has no complaint" ended 0 "All is well"
}

recorded() {
    ctl wiper write 0 70 --wire-log /run/wire.log
    cp /run/out /run/real
    tell first count
    before=$answer
    ctl wiper write 0 70 --replay /run/wire.log
    check "a recording gives the same result" ended 0 "$(sed 's/[()]/./g' /run/real)"
    ctl wiper write 0 71 --replay /run/wire.log
    check "the first request that differs is shown byte by byte" \
        ended 1 "differs.*byte 6" "recorded board 0: 01 06 50 01 01 00 46 00" "sent +board 0: 01 06 50 01 01 00 47 00"
    tell first count
    check "a replay sends the board nothing" same "$answer" "$before"
}

two_boards() {
    check "a second board is plugged in" plug second 2
    ctl boards
    check "both boards are listed" ended 0 "^0 .*firmware 1\.2" "^1 .*firmware 1\.2"
    ctl wiper write 0 63 --board 0
    ctl wiper write 0 200 --board 1 --part KV4078
    check "the second board's wiper" ended 0 "read 200 \(C8\)"
    tell second wiper
    check "it moved on the second board" same "$answer" "wiper 200"
    tell second silent
    ctl boards
    check "the first board is listed though the second is silent" ended 4 "^0 .*firmware 1\.2" "^1 .*does not answer"
    tell first silent
    tell second answer
    ctl boards
    check "the second board is listed though the first is silent" ended 4 "^0 .*does not answer" "^1 .*firmware 1\.2"
    tell first answer
    unplug second 1
}

pulled_out() {
    tell first unplugAt 6
    ctl wiper write 0 64 --link-wait 2
    check "unplugged while a reply is awaited: told" ended 4 "lost" "unplugged"
    check "unplugged while a reply is awaited: it ends" within 0 3000
    check "plugged in again" plug first 1
    ctl wiper write 0 64
    check "the next command works on the new node" ended 0 "read 64 \(40\)"
    tell first unplugAt 6
    # Not before it is out, however long the machine takes to come that far.
    { for _ in 1 2 3 4 5 6; do count 0 >/dev/null && break; done; sleep 1; tell first plug; } &
    hand=$!
    ctl wiper write 0 67 --link-wait 40
    wait "$hand"
    check "a board that comes back is gone on with" ended 0 "the link is back" "VCC is switched on again" "read 67 \(43\)"

    rpc_open
    check "a register is read" same "$(register)" 06
    tell first stale
    check "a report that nobody asked for is no reply" same "$(register)" 06
    unplug first 0
    plug first 1
    click cmdReconnect
    check "Reconnect after unplugging between exchanges: works" same "$(register)" 06
    check "Reconnect after unplugging between exchanges: no box" same "$(boxes)" 0
    unplug first 0
    plug first 1
    rpc answer '{"choices": ["Retry"]}'
    click cmdGetSDFValue
    check "an exchange after a replug ends" within 0 3000
    check "it brings one box" same "$(boxes)" 1
    check "Retry found the board again" same "$(register)" 06
    tell first unplugAt 18
    rpc answer '{"choices": ["Cancel"]}'
    click cmdGetSDFValue
    check "Cancel after unplugging during the reply ends the bench" grep -q -e -32003 /run/out
    check "it does not hang" within 0 3000
    rpc_close
    check "the terminal program ends well" same "$code" 0
    plug first 1
}

does_not_answer() {
    tell first silent
    ctl wiper read 0 --link-wait 0
    check "a board that does not answer: told" ended 4 "no reply"
    check "a board that does not answer: after 6 s" within 600 6000
    tell first answer
    ctl wiper write 0 65
    check "it answers again, to the right question" ended 0 "read 65 \(41\)"
}

no_permission() {
    user=nobody
    rule=/lib/udev/rules.d/70-vrkbench.rules
    ctl doctor
    check "no permission: doctor names the node and the rule" \
        ended 1 "$(nodes) +no permission" "$(nodes) cannot be read or written by this user" "Install the rule:.*70-vrkbench.rules"
    ctl wiper read 0
    check "no permission: a command tells the cause" ended 3 "[Nn]o permission to use .*$(nodes)"
    mkdir -p "${rule%/*}"
    cp /70-vrkbench.rules "$rule"
    ctl doctor
    check "with the rule: doctor says to plug the board in again" ended 1 "rule is installed: plug the board in again"
    unplug first 0
    plug first 1
    # The rules run a moment after the node is made.
    { sleep 1; chmod 666 "$(nodes)"; } &
    ctl wiper write 0 66
    check "permissions that come late are waited for" ended 0 "read 66 \(42\)"
    ctl doctor
    check "doctor has no complaint now" ended 0 "All is well"
    tell first silent
    ctl wiper read 0 --link-wait 0
    check "another device that may not be opened is not blamed for a silent board" ended 4 "no reply"
    tell first answer
    user=
}

exchange_rate() {
    timeout 60 usb_rate 700 >/run/out 2>/run/err
    code=$?
    check "exchange rate" ended 0 "our stack, desktop .* ratio"
    check "our stack keeps up with a loop that drains as it does" \
        awk '/our stack/ { lines++; if ($(NF - 4) < 0.2) slow = 1 } END { exit lines != 2 || slow }' /run/out
    sed 's/^/        /' /run/out
}

user=
: >/run/out >/run/err
for group in no_board one_board recorded two_boards pulled_out does_not_answer no_permission exchange_rate; do
    $group
done
echo "$passed passed, $failed failed"
