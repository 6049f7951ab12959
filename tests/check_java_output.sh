#!/usr/bin/env bash
# The Java text of every example, golden source and program compiles without a warning, comes out the
# same on every run, and replaces older files as a whole.
# usage: check_java_output.sh SOURCE_DIRECTORY TOLL
set -euo pipefail
source=$1 toll=$2
command -v javac >/dev/null || { echo "skipped: no javac on this machine"; exit 77; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "$*"
    exit 1
}

compile() { # FOLDER-OF-CLASSES FILE...
    local classes=$1
    shift
    javac -Xlint:all -Werror -encoding US-ASCII -cp "$scratch/runtime" -d "$classes" "$@"
}
mkdir "$scratch/runtime"
compile "$scratch/runtime" "$source"/runtime/java/halvorn/types/*.java

# Compiles what a folder's sources give. A source whose own errors stop it gives nothing; of one that
# Java cannot express the text says so.
compile_folder() { # LEAST FOLDER NAME [OPTION...]
    local least=$1 folder=$2 output=$scratch/$3
    shift 3
    mkdir -p "$output"
    for file in "$folder"/*.tl "$folder"/used/*.tl; do
        [ -e "$file" ] || continue
        (cd "$folder" && "$toll" --target=java "$@" -o "$output" "$file") >"$scratch/said" 2>&1 || true
        grep -q "cannot be expressed in Java" "$scratch/said" || continue
        mkdir -p "$output/partial"
        mv "$output/$(basename "$file" .tl).java" "$output/partial/"
    done
    for text in "$output"/partial/*.java; do
        [ ! -e "$text" ] || grep -q '/\*ERROR - ' "$text" || fail "no comment in $text"
    done
    local texts=("$output"/*.java)
    ! grep -l '/\*ERROR - ' "${texts[@]}" || fail "an unreported error in $folder"
    [ "${#texts[@]}" -ge "$least" ] || fail "too few files of $folder"
    compile "$output/classes" "${texts[@]}"
    echo "${#texts[@]} files of $folder"
}
compile_folder 8 "$source/examples" examples -I "$source/examples"
compile_folder 5 "$source/tests/golden" golden -I "$source/tests/golden/used"
compile_folder 8 "$source/tests/programs" programs -b -I "$source/tests/programs"

# The same text on every run, whatever the path; several targets of one parse.
cd "$source/examples"
mkdir "$scratch/again" "$scratch/all"
"$toll" --target=java -o "$scratch/again/relay_test.x" "$PWD/relay_test.tl"
cmp "$scratch/examples/relay_test.java" "$scratch/again/relay_test.java"
"$toll" --target=kob --target=c --target=java -o "$scratch/all" relay_test.tl
cmp "$scratch/all/relay_test.java" "$scratch/again/relay_test.java"
[ -s "$scratch/all/relay_test.kob" ] && [ -s "$scratch/all/relay_test.c" ]

# The directory decides about the package.
mkdir -p "$scratch/tree/halvorn/libs"
for module in hardware tolerance relay_test; do
    (cd "$scratch/tree/halvorn/libs" && "$toll" --target=java -I "$source/examples" \
        "$source/examples/$module.tl")
done
grep -q '^package halvorn.libs;$' "$scratch/tree/halvorn/libs/relay_test.java"
grep -q '^import halvorn.libs.hardware;$' "$scratch/tree/halvorn/libs/relay_test.java"
compile "$scratch/tree/classes" "$scratch"/tree/halvorn/libs/*.java
[ -z "$(find "$scratch" -name '.toll-*')" ] || fail "leaves a temporary directory"

# What Java cannot express: the comment in the text, a message, status 1; and the file that was there
# before stays whole where nothing could be made.
cd "$scratch"
cat >odd.tl <<'SOURCE'
MODULE odd
FUNCTION BOOL before(CONVERTER a, b)
PRIVATE
FUNCTION BOOL before(CONVERTER a, b)
BEGIN
    RETURN a < b
END
SOURCE
status=0
"$toll" --target=java odd.tl >said 2>&1 || status=$?
[ "$status" = 1 ] || fail "status $status for what Java cannot express"
grep -q "cannot be expressed in Java" said || fail "no message for what Java cannot express"
grep -q "ERROR - Order of objects not possible" odd.java || fail "no comment"
cp odd.java before
printf 'MODULE odd\nPRIVATE\nFUNCTION VOID f()\nBEGIN\n    g()\nEND\n' >odd.tl
"$toll" --target=java odd.tl >said 2>&1 && fail "compiles what is wrong"
cmp odd.java before

# A component finds a help screen also where it has no location.
cat >Places.java <<'SOURCE'
import halvorn.types.*;

class Places {
    public static void main(String[] arguments) {
        Data help = Data.named("HELPSCREEN", "H"), place = Data.named("PARAMETER", "P");
        Component[] all = { new Component("a", 0, help), new Component("b", 0, place),
            new Component("c", 0, place, help), new Component("d", 0, null) };
        for (Component one : all)
            System.out.println(one.getLOCATION() + ", " + one.getHELPSCREEN());
    }
}
SOURCE
compile "$scratch/places" Places.java
[ "$(java -cp "$scratch/runtime:$scratch/places" Places)" = "null, HELPSCREEN H
PARAMETER P, null
PARAMETER P, HELPSCREEN H
null, null" ] || fail "a component has another place or help screen"

# Items are constructed before those that need them, wherever they stand.
cat >Plugs.java <<'SOURCE'
class Plugs {
    public static void main(String[] arguments) {
        System.out.println(connectors.title() + ", " + connectors.seen_on(0) + ", " + connectors.seen_on(1));
        System.out.println(connectors.pin_of(connectors.P1_a) + ", " + connectors.signal(0) + ", "
            + connectors.signal(1) + ", " + connectors.lines());
        System.out.println(connectors.shown(1).getFLAGS() + ", " + connectors.HARNESS.getPARENT() + ", "
            + connectors.front.getCONNECTOR() + ", " + connectors.place.getPARENT());
    }
}
SOURCE
javac -cp "$scratch/runtime:$scratch/golden/classes" -d "$scratch/plugs" Plugs.java
[ "$(java -cp "$scratch/runtime:$scratch/golden/classes:$scratch/plugs" Plugs)" = "C101, COMPONENT ECU_NAME, COMPONENT HARNESS_NAME
PIN 1, GND, SHIELD, 140007
3, COMPONENT VEHICLE_NAME, CONNECTOR ECU_PLUG_NAME, CONNECTOR ECU_PLUG_NAME" ] || fail "an item has another attribute"

# The tree over the harness: what it measures, shows and finds, with a vehicle made up for each case.
cat >Ramp.java <<'SOURCE'
import halvorn.types.*;

class Ramp implements Hardware {
    private int[] volts;     // by line of the breakout cable
    private Data fault;      // the signal that does not fit
    private String seen = "";

    public Object syscall(int number, String name, Object[] arguments) {
        switch (name) {
        case "HARDWARE.measure_voltage": return volts[(Integer) arguments[0]];
        case "HARDWARE.wait": return 0;
        case "HARNESS_TEST.looks_like": return arguments[1] != fault;
        case "HARNESS_TEST.show": case "HARNESS_TEST.mark": seen += " " + arguments[0]; return 0;
        default: throw new Fault(name);
        }
    }

    void expect(int finding, String shown, int supply, int coolant, int rail, Data unfit) {
        volts = new int[] { 0, supply, 50, 0, 0, 0, 0, coolant, rail };
        fault = unfit;
        seen = "";
        int found = harness_test.find_in_harness();
        if (found != finding || !seen.equals(" HELPSCREEN HARNESS.plug_help" + shown))
            System.out.println(found + seen + ", not " + finding + shown);
    }

    public static void main(String[] arguments) {
        Ramp ramp = new Ramp();
        Diagnostic.setHardware(ramp);
        harness.coolant_scale.with("MAPINPUT", new Integer[] { 400, 900, 2100, 3400, 4600 })
            .with("MAPOUTPUT", new Integer[] { 130, 90, 50, 20, -30 });
        harness.rail_scale.with("MAPINPUT", new Integer[] { 500, 4500 })
            .with("MAPOUTPUT", new Integer[] { 0, 180000 });
        String coolant = " POINT 7", both = coolant + " POINT 8";
        ramp.expect(harness_test.SUPPLY_LOST, "", 0, 1500, 2500, null);
        ramp.expect(harness_test.SENSOR_WIRE, coolant + " HELPSCREEN HARNESS.pull_plug", 12400, 4900, 2500, null);
        ramp.expect(harness_test.TOO_HOT, both, 12400, 500, 2500, null);
        ramp.expect(harness_test.TOO_LITTLE_FUEL, both, 12400, 1500, 1500, null);
        ramp.expect(harness_test.COIL_FAULT, both, 12400, 1500, 2500, harness.coil_primary);
        ramp.expect(harness_test.IN_ORDER, both, 12400, 1500, 2500, null);
    }
}
SOURCE
compile "$scratch/ramp" -cp "$scratch/runtime:$scratch/examples/classes" Ramp.java
[ -z "$(java -cp "$scratch/runtime:$scratch/examples/classes:$scratch/ramp" Ramp | tee /dev/stderr)" ] || fail "the tree over the harness finds something else"

# Converters: by factors, by a map, one behind the other, backwards, as text; and words that never were
# objects, or a converter of which nothing is known, end the run.
cat >scales.tl <<'SOURCE'
MODULE scales
FUNCTION QUANTITY scaled(QUANTITY reading, CONVERTER scale)
         QUANTITY raw(QUANTITY value, CONVERTER scale)
         STRING shown(QUANTITY reading, CONVERTER scale)
         STRING carried(WORD w)
PRIVATE
FUNCTION QUANTITY scaled(QUANTITY reading, CONVERTER scale)
BEGIN
    RETURN cvt(reading, scale)
END
FUNCTION QUANTITY raw(QUANTITY value, CONVERTER scale)
BEGIN
    RETURN cvt(value, scale, BACKWARDS)
END
FUNCTION STRING shown(QUANTITY reading, CONVERTER scale)
BEGIN
    RETURN cvts(reading, scale)
END
FUNCTION STRING carried(WORD w)
BEGIN
    RETURN w
END
SOURCE
"$toll" --target=java scales.tl >said 2>&1 || fail "no conversions in Java"
cat >Scales.java <<'SOURCE'
import halvorn.types.*;

class Scales {
    static void expect(Object expected, Object found) {
        if (!expected.equals(found)) System.out.println(expected + " expected, not " + found);
    }

    static void expectFault(Runnable step) {
        try {
            step.run();
            System.out.println("no fault");
        } catch (Fault expected) { }
    }

    public static void main(String[] arguments) {
        Data line = new Converter().with("MULTIPLIER", 3).with("DIVISOR", 2).with("OFFSET", 7);
        Data map = new Converter().with("MAPINPUT", new Integer[] { 0, 10, 20 })
            .with("MAPOUTPUT", new Integer[] { 100, 0, -50 }).with("NEXT", line);
        int[][] pairs = { { 10, 22 }, { -5, 0 }, { Integer.MAX_VALUE, -1073741819 } };
        for (int[] pair : pairs) expect(pair[1], scales.scaled(pair[0], line));
        expect(10, scales.raw(22, line));
        int[][] points = { { -3, 157 }, { 0, 157 }, { 5, 82 }, { 10, 7 }, { 12, -8 }, { 99, -68 } };
        for (int[] point : points) expect(point[1], scales.scaled(point[0], map));
        expect(5, scales.raw(82, map));
        line.with("STATES", 2).with("STATETEXT", new String[] { "low", "high" });
        line.with("STATELOW", new Integer[] { 0, 50 }).with("STATEHIGH", new Integer[] { 49, 150 });
        expect("high", scales.shown(5, map));
        expect("low", scales.shown(10, map));
        expect("157", scales.shown(0, map));
        line.with("NEXT", map);
        expectFault(() -> scales.scaled(1, map));
        expectFault(() -> scales.scaled(1, new Converter()));
        expectFault(() -> scales.scaled(1, new Converter().with("FLAGS", 2)));
        expectFault(() -> scales.carried(77));
    }
}
SOURCE
compile "$scratch/scales" scales.java Scales.java
[ -z "$(java -cp "$scratch/runtime:$scratch/scales" Scales | tee /dev/stderr)" ] || fail "a conversion gives something else"
