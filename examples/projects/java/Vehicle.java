/**
 * A vehicle on the bench.
 *
 * @param name     what it is called on the job card
 * @param air      temperature of the air, in degrees
 * @param rest     of the battery at rest, in millivolts
 * @param surface  what the charger has left on top of that
 * @param sag      lost in the battery while cranking
 * @param drop     lost along the cable while cranking
 * @param draw     of the starter once it turns, in milliamps
 */
record Vehicle(String name, int air, int rest, int surface, int sag, int drop, int draw) { }
