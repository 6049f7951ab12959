package halvorn.types;

/** A pin of a connector. */
public class Pin extends Data {

    public Pin(String name, int flags) {
        super("PIN", name);
        with("NAME", name).with("FLAGS", flags);
    }
}
