package halvorn.types;

/** A component of a vehicle. */
public class Component extends Data {

    public Component(String name, int flags) {
        this(name, flags, null, null);
    }

    /** A help screen may stand in the place of a location. */
    public Component(String name, int flags, Data place) {
        this(name, flags, isScreen(place) ? null : place, isScreen(place) ? place : null);
    }

    public Component(String name, int flags, Data location, Data helpscreen) {
        super("COMPONENT", name);
        with("NAME", name).with("FLAGS", flags).with("LOCATION", location);
        with("HELPSCREEN", helpscreen);
    }

    private static boolean isScreen(Data item) {
        return item != null && item.type().equals("HELPSCREEN");
    }

    public void setParent(Data parent) {
        with("PARENT", parent);
    }
}
