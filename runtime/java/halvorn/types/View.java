package halvorn.types;

/** A view of a connector. */
public class View extends Data {

    public View(String name, int flags, Data shell, Data component, Data helpscreen) {
        super("VIEW", name);
        with("NAME", name).with("FLAGS", flags).with("SHELL", shell);
        with("COMPONENT", component).with("HELPSCREEN", helpscreen);
    }

    public void setParent(Data connector) {
        with("CONNECTOR", connector);
    }
}
