package halvorn.types;

/** A component of a vehicle. */
public class Component extends Data {

    public Component(String name, int flags) {
        this(name, flags, null, null);
    }

    public Component(String name, int flags, Data location) {
        this(name, flags, location, null);
    }

    public Component(String name, int flags, Data location, Data helpscreen) {
        super("COMPONENT", name);
        with("NAME", name).with("FLAGS", flags).with("LOCATION", location);
        with("HELPSCREEN", helpscreen);
    }

    public void setParent(Data parent) {
        with("PARENT", parent);
    }
}
