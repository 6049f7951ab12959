import halvorn.types.Hardware;

/** The tester's hardware, made up: it answers for the vehicle that it is clamped to. */
final class Bench implements Hardware {

    private Vehicle vehicle;
    private boolean lamps;
    private boolean starter;
    private int cranked; // since the starter was switched on
    private int surface; // what is left of the surface charge
    private int spent;   // on all vehicles

    /** Goes on with another vehicle. */
    void clampTo(Vehicle next) {
        vehicle = next;
        surface = next.surface();
    }

    /** The time that all tests have taken, in microseconds. */
    int spent() {
        return spent;
    }

    /** Serves the syscalls of tester.tl, under the numbers that it gives them. */
    @Override
    public Object syscall(int number, String name, Object[] arguments) {
        switch (number) {
        case 16: return measureVoltage((Integer) arguments[0]);
        case 17: return measureCurrent();
        case 18: return vehicle.air();
        case 32: return switchLamps(isOn(arguments[0]));
        case 33: return turnStarter(isOn(arguments[0]));
        case 34: return pass((Integer) arguments[0]);
        case 48: return report(arguments);
        default: return Hardware.super.syscall(number, name, arguments);
        }
    }

    private static boolean isOn(Object argument) {
        return (Integer) argument != 0;
    }

    // The pistons load the starter by turns.
    private boolean onCompression() {
        return cranked / 100000 % 2 == 1;
    }

    private boolean beforeTurning() {
        return cranked < 200000;
    }

    private int measureVoltage(int clamp) {
        int battery = vehicle.rest() + surface - (lamps ? 100 : 0);
        if (!starter) return battery;
        battery -= beforeTurning() ? vehicle.sag() * 3 / 2 : vehicle.sag();
        if (onCompression()) battery -= 60;
        return clamp == tester.AT_STARTER ? battery - vehicle.drop() : battery;
    }

    private int measureCurrent() {
        int draw = lamps ? starting.lamp_current(measureVoltage(tester.AT_BATTERY)) : 0;
        if (!starter) return draw;
        draw += beforeTurning() ? vehicle.draw() * 5 / 2 : vehicle.draw();
        return onCompression() ? draw + 5000 : draw;
    }

    private boolean switchLamps(boolean on) {
        lamps = on;
        return true;
    }

    private boolean turnStarter(boolean on) {
        starter = on;
        cranked = 0;
        return true;
    }

    // Time passes at once here. The lamps take the surface charge off at 100 mV in 5 s.
    private Object pass(int length) {
        spent += length;
        if (starter) cranked += length;
        if (lamps) surface = Math.max(0, surface - length / 50000);
        return null;
    }

    // The text comes first, and behind it what its %d stand for.
    private static Object report(Object[] arguments) {
        Object[] more = java.util.Arrays.copyOfRange(arguments, 1, arguments.length);
        System.out.printf("  " + arguments[0] + "%n", more);
        return null;
    }
}
