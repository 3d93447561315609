<?xml version="1.0"?>
<!-- What `qelm filter` does with a classic rule, as a stylesheet: a copy without the elements whose `audience` is
     there and lacks the value $keep. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:param name="keep"/>
  <xsl:output method="xml" encoding="UTF-8"/>
  <xsl:template match="@*|node()">
    <xsl:copy>
      <xsl:apply-templates select="@*|node()"/>
    </xsl:copy>
  </xsl:template>
  <xsl:template match="*[@audience]">
    <xsl:if test="contains(concat(' ', @audience, ' '), concat(' ', $keep, ' '))">
      <xsl:copy>
        <xsl:apply-templates select="@*|node()"/>
      </xsl:copy>
    </xsl:if>
  </xsl:template>
</xsl:stylesheet>
