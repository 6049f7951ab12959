/**
 * Tests the starting of some vehicles that only exist here: the modules in ../modules run as Java, and
 * a {@link Bench} stands in for the tester's hardware. All numbers are in the units of their
 * quantities: millivolts, milliamps, microseconds.
 */
public final class Main {

    private static final Vehicle[] VEHICLES = {
        new Vehicle("van", 20, 12650, 600, 2200, 250, 140000),
        new Vehicle("hatchback", 15, 12100, 0, 2500, 250, 130000),
        new Vehicle("taxi", 5, 12450, 0, 3700, 250, 150000),
        new Vehicle("estate", 20, 12600, 300, 2000, 1100, 110000),
        new Vehicle("pick-up", -15, 12500, 0, 3600, 300, 280000),
        new Vehicle("coupe", 20, 12700, 0, 900, 150, 60000),
        new Vehicle("lorry", 10, 12600, 0, 4200, 400, 320000),
    };

    private Main() { }

    private static int test(Vehicle vehicle) {
        starting.READINGS found = new starting.READINGS();
        System.out.printf("%s, %d C%n", vehicle.name(), vehicle.air());
        int verdict = starting.check(found);
        System.out.printf("  at rest %d mV", found.rest);
        if (found.mean > 0) {
            System.out.printf(", cranking %d mV, along the cable %d mV, %d A with a peak of %d A",
                              found.lowest, found.drop, found.mean / 1000, found.peak / 1000);
        }
        System.out.printf("%n  %s%n", starting.advice(verdict));
        return verdict;
    }

    public static void main(String[] arguments) {
        Bench bench = new Bench();
        int inOrder = 0;
        starting.setHardware(bench);
        for (Vehicle vehicle : VEHICLES) {
            bench.clampTo(vehicle);
            if (test(vehicle) == starting.IN_ORDER) inOrder++;
        }
        System.out.printf("%d of %d in order, tested in %d ms%n", inOrder, VEHICLES.length,
                          bench.spent() / 1000);
    }
}
