package halvorn.types;

import java.math.BigInteger;
import java.util.ArrayList;
import java.util.Collections;
import java.util.HashMap;
import java.util.List;
import java.util.Map;

/**
 * An item of data that modules name: a connector, a view, a help screen. Its attributes are kept under
 * the names that "attr" knows; a program fills them, or extends this class and answers in its own way.
 */
public class Data {

    private static final Map<String, Data> NAMED = new HashMap<>();

    private final String type;
    private final String name;
    private final Map<String, Object> attributes = new HashMap<>();

    /**
     * Makes an item.
     *
     * @param type  its type in TOLL: "CONNECTOR"
     * @param name  its name: "X1"
     */
    public Data(String type, String name) {
        this.type = type;
        this.name = name == null ? "" : name;
    }

    /** The item of a type and name: made at the first call, and the same at every other. */
    public static synchronized Data named(String type, String name) {
        return NAMED.computeIfAbsent(type + " " + name, key -> new Data(type, name));
    }

    public final String type() {
        return type;
    }

    public final String name() {
        return name;
    }

    /** Sets an attribute: an Integer, a String or a Data, or an array of one of these. */
    public Data with(String attribute, Object value) {
        attributes.put(attribute, value);
        return this;
    }

    /** Adds a value to an attribute, behind those that it has. */
    void append(String attribute, Data value) {
        Object before = attributes.get(attribute);
        Object[] values = before instanceof Object[] ? (Object[]) before : new Object[0];
        Object[] all = java.util.Arrays.copyOf(values, values.length + 1, Object[].class);
        all[values.length] = value;
        attributes.put(attribute, all);
    }

    /**
     * The value of an attribute.
     *
     * @param attribute  its name: "FLAGS"
     * @param index      of an attribute that has several values; 0 for the first
     * @return           the value; null if there is none
     */
    public Object attribute(String attribute, int index) {
        Object value = attributes.get(attribute);
        if (value instanceof Object[]) return ((Object[]) value)[index];
        return value;
    }

    @Override
    public String toString() {
        return type + " " + name;
    }

    // ---- Converters ----

    /**
     * What a converter makes of a value, with all that follow it in NEXT.
     *
     * @param value      the raw value; backwards the converted one
     * @param backwards  asks for the raw value, so that the last converter comes first
     */
    public final int convert(int value, boolean backwards) {
        List<Data> chain = chain();
        if (backwards) Collections.reverse(chain);
        int converted = value;
        for (Data converter : chain) converted = converter.convertOne(converted, backwards);
        return converted;
    }

    /**
     * The step of this converter alone: lines between the points MAPINPUT, MAPOUTPUT if there are such,
     * else value * MULTIPLIER / DIVISOR + OFFSET. A class for a converter with flags, or with a function
     * in a library, replaces it.
     */
    protected int convertOne(int value, boolean backwards) {
        if (attributes.isEmpty() || getFLAGS() != 0) throw new Fault("No conversion by " + this);
        Object[] inputs = values("MAPINPUT");
        Object[] outputs = values("MAPOUTPUT");
        if (inputs.length != 0)
            return backwards ? onLine(outputs, inputs, value) : onLine(inputs, outputs, value);
        long multiplier = factor("MULTIPLIER");
        long divisor = factor("DIVISOR");
        if (backwards) return (int) (((long) value - getOFFSET()) * divisor / multiplier);
        return (int) (value * multiplier / divisor + getOFFSET());
    }

    /** The text of the first state that holds a value, in this converter and then in its NEXT. */
    final String stateText(int value) {
        for (Data converter : chain())
            for (int i = 0; i < converter.getSTATES(); i++)
                if (value >= converter.getSTATELOW(i) && value <= converter.getSTATEHIGH(i))
                    return converter.getSTATETEXT(i);
        return Integer.toString(value);
    }

    private List<Data> chain() {
        List<Data> chain = new ArrayList<>();
        for (Data at = this; at != null; at = at.getNEXT()) {
            if (chain.contains(at)) throw new Fault(this + " leads back to itself");
            chain.add(at);
        }
        return chain;
    }

    /** A point between two others; flat outside. Sides may rise or fall. */
    private static int onLine(Object[] from, Object[] to, int value) {
        long nearest = Long.MAX_VALUE;
        int end = 0;
        for (int i = 0; i < from.length; i++) {
            long at = (Integer) from[i];
            if (Math.abs(at - value) < nearest) {
                nearest = Math.abs(at - value);
                end = (Integer) to[i];
            }
            if (i + 1 == from.length || at == (Integer) from[i + 1]) continue;
            long run = (Integer) from[i + 1] - at;
            boolean isInside = run > 0 ? value >= at && value <= at + run
                                       : value <= at && value >= at + run;
            if (!isInside) continue;
            BigInteger rise = BigInteger.valueOf((long) (Integer) to[i + 1] - (Integer) to[i]);
            return (Integer) to[i] + rise.multiply(BigInteger.valueOf(value - at))
                                         .divide(BigInteger.valueOf(run)).intValue();
        }
        return end;
    }

    private Object[] values(String attribute) {
        Object value = attributes.get(attribute);
        if (value == null) return new Object[0];
        return value instanceof Object[] ? (Object[]) value : new Object[] { value };
    }

    /** A factor that nobody set is 1. */
    private int factor(String attribute) {
        return attributes.containsKey(attribute) ? number(attribute, 0) : 1;
    }

    private int number(String attribute, int index) {
        Object value = attribute(attribute, index);
        return value == null ? 0 : ((Number) value).intValue();
    }

    private String text(String attribute, int index) {
        return (String) attribute(attribute, index);
    }

    private Data item(String attribute, int index) {
        return (Data) attribute(attribute, index);
    }

    public String getNAME() {
        return text("NAME", 0);
    }

    public String getNAME(int index) {
        return text("NAME", index);
    }

    public int getFLAGS() {
        return number("FLAGS", 0);
    }

    public int getFLAGS(int index) {
        return number("FLAGS", index);
    }

    public String getMNEMONIC() {
        return text("MNEMONIC", 0);
    }

    public String getMNEMONIC(int index) {
        return text("MNEMONIC", index);
    }

    public Data getLOCATION() {
        return item("LOCATION", 0);
    }

    public Data getLOCATION(int index) {
        return item("LOCATION", index);
    }

    public Data getPOINT() {
        return item("POINT", 0);
    }

    public Data getPOINT(int index) {
        return item("POINT", index);
    }

    public Data getVIEW() {
        return item("VIEW", 0);
    }

    public Data getVIEW(int index) {
        return item("VIEW", index);
    }

    public int getCABLE() {
        return number("CABLE", 0);
    }

    public int getCABLE(int index) {
        return number("CABLE", index);
    }

    public Data getHELPSCREEN() {
        return item("HELPSCREEN", 0);
    }

    public Data getHELPSCREEN(int index) {
        return item("HELPSCREEN", index);
    }

    public Data getVARLOC() {
        return item("VARLOC", 0);
    }

    public Data getVARLOC(int index) {
        return item("VARLOC", index);
    }

    public Data getCONNECTOR() {
        return item("CONNECTOR", 0);
    }

    public Data getCONNECTOR(int index) {
        return item("CONNECTOR", index);
    }

    public Data getCOMPONENT() {
        return item("COMPONENT", 0);
    }

    public Data getCOMPONENT(int index) {
        return item("COMPONENT", index);
    }

    public Data getSHELL() {
        return item("SHELL", 0);
    }

    public Data getSHELL(int index) {
        return item("SHELL", index);
    }

    public String getSIGNALNAME() {
        return text("SIGNALNAME", 0);
    }

    public String getSIGNALNAME(int index) {
        return text("SIGNALNAME", index);
    }

    public Data getPIN() {
        return item("PIN", 0);
    }

    public Data getPIN(int index) {
        return item("PIN", index);
    }

    public int getLINE() {
        return number("LINE", 0);
    }

    public int getLINE(int index) {
        return number("LINE", index);
    }

    public int getADAPTOR() {
        return number("ADAPTOR", 0);
    }

    public int getADAPTOR(int index) {
        return number("ADAPTOR", index);
    }

    public int getADAPTORTYPE() {
        return number("ADAPTORTYPE", 0);
    }

    public int getADAPTORTYPE(int index) {
        return number("ADAPTORTYPE", index);
    }

    public Data getMATINGPOINT() {
        return item("MATINGPOINT", 0);
    }

    public Data getMATINGPOINT(int index) {
        return item("MATINGPOINT", index);
    }

    public Data getPARENT() {
        return item("PARENT", 0);
    }

    public Data getPARENT(int index) {
        return item("PARENT", index);
    }

    public Data getNEXT() {
        return item("NEXT", 0);
    }

    public Data getNEXT(int index) {
        return item("NEXT", index);
    }

    public int getOFFSET() {
        return number("OFFSET", 0);
    }

    public int getOFFSET(int index) {
        return number("OFFSET", index);
    }

    public int getMULTIPLIER() {
        return number("MULTIPLIER", 0);
    }

    public int getMULTIPLIER(int index) {
        return number("MULTIPLIER", index);
    }

    public int getDIVISOR() {
        return number("DIVISOR", 0);
    }

    public int getDIVISOR(int index) {
        return number("DIVISOR", index);
    }

    public int getOLDTYPE() {
        return number("OLDTYPE", 0);
    }

    public int getOLDTYPE(int index) {
        return number("OLDTYPE", index);
    }

    public int getQUANTITYTYPE() {
        return number("QUANTITYTYPE", 0);
    }

    public int getQUANTITYTYPE(int index) {
        return number("QUANTITYTYPE", index);
    }

    public int getSTATES() {
        return number("STATES", 0);
    }

    public int getSTATES(int index) {
        return number("STATES", index);
    }

    public String getSTATETEXT() {
        return text("STATETEXT", 0);
    }

    public String getSTATETEXT(int index) {
        return text("STATETEXT", index);
    }

    public int getSTATELOW() {
        return number("STATELOW", 0);
    }

    public int getSTATELOW(int index) {
        return number("STATELOW", index);
    }

    public int getSTATEHIGH() {
        return number("STATEHIGH", 0);
    }

    public int getSTATEHIGH(int index) {
        return number("STATEHIGH", index);
    }

    public String getTITLE() {
        return text("TITLE", 0);
    }

    public String getTITLE(int index) {
        return text("TITLE", index);
    }

    public Data getPICTURE() {
        return item("PICTURE", 0);
    }

    public Data getPICTURE(int index) {
        return item("PICTURE", index);
    }

    public int getATTRIBUTES() {
        return number("ATTRIBUTES", 0);
    }

    public int getATTRIBUTES(int index) {
        return number("ATTRIBUTES", index);
    }
}
