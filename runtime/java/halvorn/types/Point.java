package halvorn.types;

/** A place where a signal can be measured. */
public class Point extends Data {

    public Point(String name, int flags, Data location, String signal, int line) {
        super("POINT", name);
        with("NAME", name).with("FLAGS", flags).with("LOCATION", location);
        with("SIGNALNAME", signal).with("LINE", line);
    }

    public void setParent(Data pin) {
        with("PIN", pin);
    }
}
