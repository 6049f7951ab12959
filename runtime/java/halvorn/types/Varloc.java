package halvorn.types;

/** A place that a connector or component has in some variants. */
public class Varloc extends Data {

    public Varloc(String name, Data location, int attributes) {
        super("VARLOC", name);
        with("NAME", name).with("LOCATION", location).with("ATTRIBUTES", attributes);
    }

    public void setParent(Data owner) {
        with("PARENT", owner);
        if (owner != null) owner.append("VARLOC", this);
    }
}
