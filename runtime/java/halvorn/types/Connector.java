package halvorn.types;

/** A connector of a vehicle, with the views that show it. */
public class Connector extends Data {

    public Connector(String name, String mnemonic, Data location, int cable, Data helpscreen) {
        super("CONNECTOR", name);
        with("NAME", name).with("MNEMONIC", mnemonic).with("LOCATION", location);
        with("CABLE", cable).with("HELPSCREEN", helpscreen);
    }

    /** Adds a view, behind those that are there. */
    public void addView(Data view) {
        append("VIEW", view);
    }
}
